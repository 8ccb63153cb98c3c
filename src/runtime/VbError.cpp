#include "VbError.h"

namespace corvalog {

std::string_view vbErrorDescription(int number)
{
    switch (number) {
    case vberr::InvalidProcedureCall:
        return "Invalid procedure call or argument";
    case vberr::Overflow:
        return "Overflow";
    case vberr::OutOfMemory:
        return "Out of memory";
    case vberr::SubscriptOutOfRange:
        return "Subscript out of range";
    case vberr::DivisionByZero:
        return "Division by zero";
    case vberr::OutOfStackSpace:
        return "Out of stack space";
    case vberr::TypeMismatch:
        return "Type mismatch";
    case vberr::BadFileName:
        return "Bad file name or number";
    case vberr::FileNotFound:
        return "File not found";
    case vberr::DeviceIoError:
        return "Device I/O error";
    case vberr::FileAlreadyExists:
        return "File already exists";
    case vberr::DiskFull:
        return "Disk full";
    case vberr::TooManyFiles:
        return "Too many files";
    case vberr::DeviceUnavailable:
        return "Device unavailable";
    case vberr::PermissionDenied:
        return "Permission denied";
    case vberr::RenameAcrossDrives:
        return "Can't rename with different drive";
    case vberr::PathFileAccessError:
        return "Path/File access error";
    case vberr::PathNotFound:
        return "Path not found";
    case vberr::ObjectVariableNotSet:
        return "Object variable not set";
    case vberr::InvalidUseOfNull:
        return "Invalid use of Null";
    case vberr::ObjectRequired:
        return "Object required";
    case vberr::NoSuchMember:
        return "Object doesn't support this property or method";
    case vberr::WrongArguments:
        return "Wrong number of arguments or invalid property assignment";
    case vberr::VariableUndefined:
        return "Variable is undefined";
    case vberr::SyntaxError:
        return "Syntax error";
    case vberr::ExpectedOpenParen:
        return "Expected '('";
    case vberr::ExpectedCloseParen:
        return "Expected ')'";
    case vberr::ExpectedIdentifier:
        return "Expected identifier";
    case vberr::IdentifierTooLong:
        return "Identifier too long";
    case vberr::ExpectedEndOfStatement:
        return "Expected end of statement";
    case vberr::InvalidNumber:
        return "Invalid number";
    case vberr::InvalidCharacter:
        return "Invalid character";
    case vberr::UnterminatedString:
        return "Unterminated string constant";
    case vberr::ExpectedExpression:
        return "Expected expression";
    default:
        return "Unknown runtime error";
    }
}

VbError::VbError(int number)
    : VbError(number, std::string(vbErrorDescription(number)))
{
}

VbError::VbError(int number, std::string description)
    : std::runtime_error(description)
    , m_number(number)
    , m_description(std::move(description))
{
}

} // namespace corvalog
