// The one error of the command language: what the prompt shows the user, word for word.
#pragma once

#include <QString>

namespace tock {

// Thrown by value by the tokenizer, the parser, the time syntax and target resolution.
struct ShellError {
    QString message; // short, lower case, no final full stop
    bool operator==(const ShellError &) const = default;
};

} // namespace tock
