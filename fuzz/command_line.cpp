// The command line: one argument per line, "@" at its beginning being the root of the tree. Arguments that
// would lead out of the tree are dropped. The program finds the end of its input at once where it asks.
#include "kor-entry.h"
#include "support/input.h"
#include "support/tree.h"
#include "support/work_limit.h"

#include <vector>

namespace {

bool stays_in_tree(const std::string& argument) {
    return argument.find("..") == std::string::npos && argument.find_first_of("/\\") != 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kor_fuzz::Input input(data, size);
    std::vector<std::string> arguments = {"kor"};
    while (arguments.size() < 8 && !input.empty()) {
        const std::string argument = input.line();
        if (stays_in_tree(argument))
            arguments.push_back(argument.substr(0, 1) == "@" ? kor_fuzz::tree() + "/" + argument.substr(1)
                                                             : argument);
    }
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    kor_fuzz::clear_tree();
    kor_fuzz::write_small_models();
    kor_fuzz::write_file("density.bin", std::string("\0\0\0\0\4\0\0\0\3\0\0\0", 12) + std::string(768, '\1'));
    const kor_fuzz::Answers nothing("");
    const kor_fuzz::WorkLimit limit;
    const int status = kor::kor_main(static_cast<int>(arguments.size()), argv.data());
    kor_fuzz::require(status == 0 || status == 1, "the exit status is 0 or 1");
    return 0;
}
