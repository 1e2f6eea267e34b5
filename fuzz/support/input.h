// The bytes of one execution, taken piece by piece from the front, and the rule that a target states about
// what the program makes of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kor_fuzz {

/// Ends the process with the rule on standard error (as it was when the process started) unless it holds.
void require(bool holds, const char* rule);

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : bytes_(reinterpret_cast<const char*>(data), size) {}

    /// Whether nothing is left.
    bool empty() const { return bytes_.empty(); }
    /// One byte, 0 at the end of the input.
    unsigned byte();
    /// A number in first..last (at most 65536 of them) from two bytes.
    int number(int first, int last);
    /// Up to the next line end, which is dropped; without bytes of value 0.
    std::string line();
    /// Everything that is left.
    std::string rest();
    /// What stands before the next line "=====", which is dropped; everything when there is none.
    std::string section();

private:
    std::string_view bytes_;
};

} // namespace kor_fuzz
