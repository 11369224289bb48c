// Directories and files of a test.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace ormel::test {

// A new directory, removed with its owner.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::filesystem::path &path() const { return path_; }
    std::filesystem::path operator/(const std::string &name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// A directory as servers have it: they run in bin/ and find their settings in ../conf.
class ServerDir : public TempDir {
public:
    ServerDir();

    std::filesystem::path bin() const { return path() / "bin"; }
    std::filesystem::path conf(const std::string &name) const { return path() / "conf" / name; }
};

// The file's bytes; none where there is no file.
std::string readFile(const std::filesystem::path &path);
void writeFile(const std::filesystem::path &path, const std::string &text);
// The names of what lies in the directory, sorted.
std::vector<std::string> namesIn(const std::filesystem::path &directory);
// Whether the condition came true before a minute was over.
bool eventually(const std::function<bool()> &condition);

} // namespace ormel::test
