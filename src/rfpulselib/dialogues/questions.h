// What the pulse-shape dialogues share: questions, each answer followed by a newline.
#pragma once

#include <initializer_list>

namespace kor {

struct Question {
    const char* prompt;
    double* answer;
};

/// Asks all questions in order; false at the first answer that cannot be read.
bool ask_numbers(std::initializer_list<Question> questions);
/// The same for one whole number.
bool ask_choice(const char* prompt, int* choice);

} // namespace kor
