#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace corvalog::cli {

// Wrong command-line use: the message goes to stderr with the usage, and the exit code is 2.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The words after the command name, consumed as options and positional values.
class CliArgs
{
public:
    // Words after a "--" are values only, so an expression such as "--1" can be given.
    explicit CliArgs(std::vector<std::string> words);

    // Removes and returns every value of a repeatable option ("--tag X" or "--tag=X").
    std::vector<std::string> takeAll(std::string_view option);
    // Removes and returns the value of an option given at most once.
    std::optional<std::string> take(std::string_view option);
    // Removes a flag; true when it was present.
    bool takeFlag(std::string_view option);
    // The remaining words, which must be exactly `count` positional values.
    std::vector<std::string> positional(std::size_t count);
    // The remaining words, however many (none may look like an option).
    std::vector<std::string> positionalAll();

private:
    std::vector<std::string> m_words;
    std::vector<std::string> m_values; // after "--"
};

// "FF12", "ff12", "12": one to `maxDigits` hexadecimal digits (four for a Data Tag; a driver
// notification carries 32 bits, so a packet may name tags beyond the table).
std::int32_t parseDataTag(std::string_view text, std::size_t maxDigits = 4);
// A decimal whole number within [min, max].
std::int64_t parseWhole(
    std::string_view text, std::int64_t min, std::int64_t max, std::string_view what);
// Byte pairs "0AFF" or "0A FF" into bytes.
std::string parseHexBytes(std::string_view text);

} // namespace corvalog::cli
