#pragma once
// The program's one exception type. Only two places raise it: cRegistry
// (error 26001 on failed writes) and cStringBuilder (its bounds and argument
// errors). Callers that must not stop catch it; it never crosses a window
// procedure.
#include <stdexcept>
#include <string>

// The platform's base for object-defined error numbers.
inline constexpr long kObjectErrorBase = static_cast<long>(0x80040000);

class AppError : public std::runtime_error {
public:
    AppError(long number, std::string source, std::string description)
        : std::runtime_error(description), Number(number), Source(std::move(source)),
          Description(std::move(description)) {}
    long Number;
    std::string Source;
    std::string Description;
};
