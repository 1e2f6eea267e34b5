// Where a target works: a throwaway tree on a memory file system, if the machine has one, in which the
// program believes to lie as TREE/build/kor.
#pragma once

#include <string>
#include <string_view>

namespace kor_fuzz {

/// Root of this process's tree, without a separator at its end. The first call makes it, with
/// TREE/build/runtime as the working directory; it is removed when the process ends in good order.
const std::string& tree();

/// Writes a file below the tree; missing folders on the way are made.
void write_file(const std::string& name, std::string_view bytes);
/// The bytes of a file below the tree; empty when it cannot be read.
std::string read_file(const std::string& name);
/// Removes everything in the tree but the working directory TREE/build/runtime, and enters that again.
void clear_tree();

/// Three small model sets of a pair of spins 1/2, as a user has them: TREE/models/slice.kormodel (three
/// voxels, a pulse and a receiver of 4 samples), cosy.kormodel (four evolution rows) and fid.kormodel (a
/// pulse of 16 samples that names a target for the optimiser).
void write_small_models();

/// Until its end the process reads `answers` as standard input; nothing after them.
class Answers {
public:
    explicit Answers(const std::string& answers);
    ~Answers();
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;
};

} // namespace kor_fuzz
