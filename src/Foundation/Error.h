#pragma once

#include <QString>

#include <exception>

namespace veltrin {

/// Base of the errors that carry words for the user. Only the model road throws; at the edge of a foreign
/// application a failure is a value.
class Error : public std::exception {
public:
    /// The sentence shown to the user, in the language it is written in.
    virtual QString errorDescription() const = 0;
    const char* what() const noexcept override;
};

/// The words for any exception: `errorDescription` where there is one, else `what()`.
QString describe(const std::exception& error);

}  // namespace veltrin
