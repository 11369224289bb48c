// The database password, from a file or a person.
#pragma once

#include <string>

namespace cli {

// The password in a file, without the line end behind it. Throws Failure.
std::string passwordFromFile(const std::string &path);

// Asks for the password, with these words, on the terminal of standard input, without showing it. Throws UsageError
// where standard input is no terminal, Failure where the person gives none.
std::string passwordFromTerminal(const std::string &words);

} // namespace cli
