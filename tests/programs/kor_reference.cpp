// The whole program with the reference engine: what kor is held against.
#include "kor-entry.h"
#include "korengine.h"

int main(int argc, char** argv) {
    kor::EngineSelect(kor::Engine::reference);
    return kor::kor_main(argc, argv);
}
