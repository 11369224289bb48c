// Runs every file of a folder through the function that the fuzzer calls, with any compiler.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

std::vector<std::filesystem::path> filesOf(const char *folder) {
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        files.push_back(std::filesystem::absolute(entry.path()));
    std::sort(files.begin(), files.end());
    return files;
}

void run(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
    // A block of exactly that size, so that reading past its end is found.
    const std::vector<uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const auto files = filesOf(argv[1]);
    for (const auto &file : files) {
        std::fprintf(stderr, "%s\n", file.filename().c_str()); // the last line names the one that failed
        run(file);
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
