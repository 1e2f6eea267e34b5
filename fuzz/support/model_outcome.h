// What holds for status and message of every operation on a model, whatever its input.
#pragma once

#include "korlimits.h"
#include "kormodel/records.h"
#include "support/input.h"

#include <cstring>
#include <memory>

namespace kor_fuzz {

/// Calls operation(errbuf, errbufsz) with a buffer of exactly KOR_MESSAGE_SIZE characters on the heap, where
/// AddressSanitizer sees a step beyond it, and checks that a success says nothing and a failure says
/// something.
template <class Operation> kor::KORModelStatus checked_status(Operation operation) {
    const std::unique_ptr<char[]> message(new char[kor::KOR_MESSAGE_SIZE]());
    const kor::KORModelStatus status = operation(message.get(), std::size_t{kor::KOR_MESSAGE_SIZE});
    require(status >= kor::KOR_MODEL_OK && status <= kor::KOR_MODEL_ERR_INCOMPATIBLE,
            "the status is one of the seven");
    require((status == kor::KOR_MODEL_OK) == (message[0] == '\0'),
            "a failure, and only a failure, has a message");
    require(std::memchr(message.get(), '\0', kor::KOR_MESSAGE_SIZE) != nullptr,
            "the message ends within its buffer");
    return status;
}

} // namespace kor_fuzz
