#include "support/files.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace ormel::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
    std::string pattern = (fs::canonical(fs::temp_directory_path()) / "ormel-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make a directory like " + pattern);
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

ServerDir::ServerDir() {
    fs::create_directory(bin());
    fs::create_directory(path() / "conf");
}

std::string readFile(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const fs::path &path, const std::string &text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out.flush())
        throw std::runtime_error("cannot write " + path.string());
}

std::vector<std::string> namesIn(const fs::path &directory) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

bool eventually(const std::function<bool()> &condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

} // namespace ormel::test
