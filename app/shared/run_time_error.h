#pragma once
// Errors that no handler catches: they surface as the program's unhandled error, with these texts.

#include <cstdint>
#include <stdexcept>

namespace app {

/// A classic run-time error. what() is its Swedish text, UTF-8.
class RunTimeError : public std::runtime_error {
 public:
    RunTimeError(std::int32_t number, const char* text) : std::runtime_error(text), number_(number) {}
    std::int32_t Number() const { return number_; }

 private:
    std::int32_t number_;
};

/// A number beyond the range of its type.
inline RunTimeError Overflow() {
    return {6, "Spill"};
}
/// A text that is not what is asked for, such as a day that the calendar does not have.
inline RunTimeError TypeMismatch() {
    return {13, "Inkompatibla typer"};
}

}  // namespace app
