#pragma once

#include <string_view>

namespace vendril::fuzz {

/// Each fuzz target is a program of its own, whose source defines this function: it gives `input`
/// to the code under test and requires what has to hold whatever the input. It keeps nothing from
/// one call to the next.
void check(std::string_view input);

/// Ends the program when a property does not hold, with the property as a sentence on standard
/// error; the fuzzer keeps the input then.
void require(bool holds, std::string_view property);

/// Requires that `message` makes exactly one record of the system log, which is UTF-8 and holds no
/// control character: nobody who has a say in its text can forge a second record.
void requireOneRecord(std::string_view message);

}  // namespace vendril::fuzz
