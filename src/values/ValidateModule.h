#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvalog {

// The key filter of the number boxes. A typed character replaces `length` characters of `text`
// from `start` (length 0: it goes in at the cursor, `start`). It is let through when it is a
// digit; one of `extra`; the decimal separator ("." always, "," too where the locale writes
// decimal commas) while the text left after the replacement holds none; or "-" going in at the
// start of a text that holds none. Editing keys never come here: the box lets them pass.
bool NumericKeyAllowed(std::string_view text, int start, int length, char key, bool commaDecimal,
    std::string_view extra = {});

// What of `pasted` may go into the same place: its characters in order, each kept when the key
// filter would let it be typed there after the ones kept before it.
std::string NumericPasteFilter(std::string_view text, int start, int length,
    std::string_view pasted, bool commaDecimal, std::string_view extra = {});

// The number a number box of the workspace editor holds: the whole text read as a number
// (blanks around it allowed; "," taken as the decimal point where the locale writes decimal
// commas, "." in any locale, no thousands separators). Nothing when the box is empty or holds
// anything else, so the property it edits keeps its value.
std::optional<double> numberBoxValue(std::string_view text, bool commaDecimal);

// The same, narrowed to the property's type as the script converts (round half to even);
// nothing when the number does not fit.
std::optional<float> numberBoxSingle(std::string_view text, bool commaDecimal);
std::optional<std::int16_t> numberBoxInteger(std::string_view text, bool commaDecimal);
std::optional<std::int32_t> numberBoxLong(std::string_view text, bool commaDecimal);

} // namespace corvalog
