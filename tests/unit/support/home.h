// A directory like a server's: bin to run in, conf beside it.
#ifndef UNIT_HOME_H
#define UNIT_HOME_H

#include <filesystem>
#include <fstream>
#include <string>

#include <stdlib.h>

#include <gtest/gtest.h>

namespace unit {

// Works in the bin of a fresh directory for as long as it lives.
class Home {
public:
    Home() : before_(std::filesystem::current_path()) {
        std::string name = std::filesystem::temp_directory_path() / "ormel_unit_XXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        root_ = name;
        std::filesystem::create_directory(root_ / "bin");
        std::filesystem::create_directory(root_ / "conf");
        std::filesystem::current_path(root_ / "bin");
    }
    ~Home() {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(root_);
    }
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;

    std::filesystem::path Conf() const { return root_ / "conf" / "db.conf"; }
    void Write(const std::string &text) const { std::ofstream(Conf(), std::ios::binary) << text; }

private:
    std::filesystem::path before_;
    std::filesystem::path root_;
};

} // namespace unit

#endif
