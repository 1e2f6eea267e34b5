#include "kor/expectation_dialogues.h"

#include "binaryfilehandling.h"
#include "consoleutil.h"
#include "kor/expectation_values.h"
#include "kor/product_operator_dialogues.h"
#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "kordatafileio.h"
#include "korplatform.h"
#include "modelfiles.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr char density_file_name[] = "dm.bin";
constexpr long header_bytes = 12;
constexpr int output_name_size = 512;

// The output that the user chose.
struct Output {
    std::FILE* file;
    char name[output_name_size];
    ExpectationSeriesFormat format;
};

// The matrices of the working directory's density file, n x n.
struct Density {
    std::FILE* file;
    int n, count;
};

void wait_after(const char* text) {
    std::printf("%s", text);
    console_wait_for_enter();
}

void wait_after_failure() {
    wait_after("Press <Enter> to continue");
}

// Opens "dm.bin", reads its header and checks that its matrices can be used. The type is taken as it is: what
// stands behind the header decides.
bool open_density(Density* density) {
    density->file = platform_open(density_file_name, "rb");
    if (!density->file) {
        std::perror("ExpValNDensMat: fopen(dm.bin)");
        return false;
    }
    int type = 0;
    if (ReadBinFileHeader_status(density->file, &type, &density->n, &density->count) != BINFH_OK) {
        std::fprintf(stderr, "ExpValNDensMat: failed to read binary header from %s\n", density_file_name);
        return false;
    }
    const long position = std::ftell(density->file);
    if (position != header_bytes)
        std::fprintf(stderr,
                     "ExpValNDensMat: warning: unexpected header size/position (ftell=%ld, expected 12)\n",
                     position);
    if (!g_runtime.spinsystemdefined) {
        std::fputs("ExpValNDensMat: define spin system first.\n", stderr);
        return false;
    }
    if (density->n < 1 || density->n > KOR_MAX_STATES) {
        std::fprintf(stderr, "ExpValNDensMat: unsupported matrix dimension fn=%d (max %d)\n", density->n,
                     KOR_MAX_STATES);
        return false;
    }
    if (density->n != g_runtime.n)
        std::fprintf(
            stderr,
            "ExpValNDensMat: warning: the matrices of %s have dimension %d, those of the spin system %d: "
            "no operator of this system fits\n",
            density_file_name, density->n, g_runtime.n);
    return true;
}

enum class Answer { ready, refused, no_name };

// Asks for the kind and the name of the output and opens it.
Answer ask_output(Output* output) {
    std::printf("Create:\n"
                "       1. SG-plot file (ASCII)\n"
                "       2. Raw binary double file (one value per dw step)\n");
    int choice = 0;
    if (!scan_int("Your choice [1,2] : ", &choice)) {
        std::fputs("ExpValNDensMat: invalid choice\n", stderr);
        return Answer::refused;
    }
    const bool text = choice == 1;
    output->format = text ? ExpectationSeriesFormat::text : ExpectationSeriesFormat::real_parts;
    std::printf(text ? "Output text file name : " : "Output binary file name : ");
    if (!console_read_word(output->name, sizeof output->name)) {
        std::fputs("ExpValNDensMat: invalid output name\n", stderr);
        return Answer::no_name;
    }
    if (platform_same_file(output->name, density_file_name)) {
        std::fprintf(stderr, "ExpValNDensMat: the output file %s is the density file that is read\n",
                     output->name);
        return Answer::refused;
    }
    if (replaces_model_files(output->name))
        return Answer::refused;
    output->file = platform_open(output->name, text ? "w" : "wb");
    if (!output->file) {
        std::perror(text ? "ExpValNDensMat: fopen(out text)" : "ExpValNDensMat: fopen(out bin)");
        return Answer::refused;
    }
    return Answer::ready;
}

// Every value to the output, which is closed.
bool write_output(const Density& density, const CMatrix& op, const Output& output) {
    const int written =
        write_expectation_series(density.file, density.n, density.count, op, output.file, output.format);
    if (std::ferror(density.file))
        std::perror(density_file_name);
    const bool failed = std::ferror(output.file) != 0;
    const bool closed = std::fclose(output.file) == 0;
    if (failed || !closed)
        std::fprintf(stderr, "ExpValNDensMat: write error on output file %s: %s\n", output.name,
                     std::strerror(errno));
    return written && closed;
}

// The dialogue behind an opened density file.
void run_dialogue(const Density& density) {
    static CMatrix op;
    static Output output;
    ExpectationOperator(density.n, spins_of_basis(), g_runtime.Ilist, g_runtime.ket, op);
    const Answer answer = ask_output(&output);
    if (answer == Answer::no_name)
        return;
    if (answer == Answer::refused || !write_output(density, op, output)) {
        wait_after_failure();
        return;
    }
    wait_after("Done. Press <Enter> to continue");
}

} // namespace

void ExpValNDensMat() {
    Density density{};
    if (open_density(&density))
        run_dialogue(density);
    else
        wait_after_failure();
    if (density.file)
        std::fclose(density.file);
}

void CalcExpVal() {
    for (;;) {
        std::printf("****************************************************\n"
                    "***       CALCULATION OF EXPECTATION VALUES      ***\n"
                    "****************************************************\n"
                    "\n"
                    "Possible actions :\n"
                    "\n"
                    "          1. Calculate expectation values of operators (from dm.bin)\n"
                    "          2. Continue to main menu\n"
                    "\n");
        int choice = 0;
        if (!scan_int("Your choice [1,2] : ", &choice) || choice == 2)
            return;
        ExpValNDensMat();
    }
}

} // namespace kor
