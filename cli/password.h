// The database password: from a file or a person, and what libdecrypt found when it was loaded.
#pragma once

#include <string>

#include "error.h"

namespace cli {

// The password in a file, without the line end behind it. Throws Failure.
std::string passwordFromFile(const std::string &path);

// Asks for the password, with these words, on the terminal of standard input, without showing it. Throws UsageError
// where standard input is no terminal, Failure where the person gives none.
std::string passwordFromTerminal(const std::string &words);

bool isPasswordKnown();

// Whether there is a service's credential, which comes before a home's password, and libdecrypt took none from it.
bool isCredentialRefused();

// Why the library has no password, in the bin/ of a home.
Failure passwordFailure();

} // namespace cli
