#include "kor-entry.h"

int main(int argc, char** argv) {
    return kor::kor_main(argc, argv);
}
