// A home: the directory whose bin/, conf/, data/ and var/log/ belong to one set of processes.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace cli {

// What the command line says about directories.
struct Place {
    std::string home;       // --home, or empty
    std::string calledFrom; // set by enterHome for the program that it starts: the caller's directory
};

// Makes bin/ of the home the working directory. The platform's libraries read ../conf when they are loaded, so that the
// program starts itself again there and this call does not return; it returns where that was done already or where
// the caller stands in a bin/. Throws UsageError.
void enterHome(const Place &place, const std::vector<std::string> &arguments);

// A file that the caller named, also when the caller's directory is not the working directory any more.
std::filesystem::path callersFile(const Place &place, const std::string &name);

// The absolute name of a file of the home around the working directory.
std::string homeFile(const std::string &name);

// What the configuration of that home says under a key: its last value that is not empty.
std::string configured(const std::string &key);

// The engine that it names, or stands for: by a host a server.
std::string configuredEngine();

// The absolute name of this process's log file.
std::string logFile();

} // namespace cli
