// A directory like a server's, with bin to run in; removed at the end of the process.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <stdlib.h>

#include "require.h"

namespace fuzz {

class Home {
public:
    Home() {
        std::string name = std::filesystem::temp_directory_path() / "ormel_fuzz_XXXXXX";
        require(mkdtemp(name.data()) != nullptr, "a temporary directory can be made");
        root_ = name;
        std::filesystem::create_directory(root_ / "bin");
        std::filesystem::create_directory(root_ / "conf");
        std::filesystem::current_path(root_ / "bin");
    }
    ~Home() {
        std::error_code ignored;
        std::filesystem::current_path("/", ignored);
        std::filesystem::remove_all(root_, ignored);
    }
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;

    // Writes a file, by its name from bin.
    static void write(const char *name, const std::string &text) { std::ofstream(name, std::ios::binary) << text; }

private:
    std::filesystem::path root_;
};

} // namespace fuzz
