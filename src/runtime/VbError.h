#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace corvalog {

// The run-time and compile error numbers the expression language reports. Callers test the
// numbers (an overflow, 6, is accepted by the expression check), so they keep their meanings.
namespace vberr {
constexpr int InvalidProcedureCall = 5;
constexpr int Overflow = 6;
constexpr int OutOfMemory = 7;
constexpr int SubscriptOutOfRange = 9;
constexpr int DivisionByZero = 11;
constexpr int OutOfStackSpace = 28;
constexpr int TypeMismatch = 13;
constexpr int BadFileName = 52;
constexpr int FileNotFound = 53;
constexpr int DeviceIoError = 57;
constexpr int FileAlreadyExists = 58;
constexpr int DiskFull = 61;
constexpr int TooManyFiles = 67;
constexpr int DeviceUnavailable = 68;
constexpr int PermissionDenied = 70;
constexpr int RenameAcrossDrives = 74;
constexpr int PathFileAccessError = 75;
constexpr int PathNotFound = 76;
constexpr int ObjectVariableNotSet = 91;
constexpr int InvalidUseOfNull = 94;
constexpr int ObjectRequired = 424;
constexpr int NoSuchMember = 438;
constexpr int WrongArguments = 450;
constexpr int VariableUndefined = 500;
constexpr int SyntaxError = 1002;
constexpr int ExpectedOpenParen = 1005;
constexpr int ExpectedCloseParen = 1006;
constexpr int ExpectedIdentifier = 1010;
constexpr int IdentifierTooLong = 1030;
constexpr int ExpectedEndOfStatement = 1025;
constexpr int InvalidNumber = 1031;
constexpr int InvalidCharacter = 1032;
constexpr int UnterminatedString = 1033;
constexpr int ExpectedExpression = 1023;
} // namespace vberr

// The standard description of an error number ("Overflow"), or "Unknown runtime error".
std::string_view vbErrorDescription(int number);

// A run-time or compile error with its number and description, as the expression engine and
// the runtime helpers raise it.
class VbError : public std::runtime_error
{
public:
    explicit VbError(int number);
    VbError(int number, std::string description);

    int number() const { return m_number; }
    const std::string &description() const { return m_description; }

private:
    int m_number;
    std::string m_description;
};

} // namespace corvalog
