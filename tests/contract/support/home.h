// A directory as a server has it: it runs in bin/, its settings are in ../conf, its data in ../data.
#pragma once

#include <filesystem>
#include <string>

namespace contract {

// The process works in its bin/ for as long as it lives; then it is removed.
class Home {
public:
    Home();
    ~Home();
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;

    const std::filesystem::path &root() const { return root_; }
    std::filesystem::path config() const { return root_ / "conf" / "db.conf"; }
    std::filesystem::path data(const std::string &file) const { return root_ / "data" / file; }
    void writeConfig(const std::string &text) const { write(config(), text); }

    static void write(const std::filesystem::path &file, const std::string &bytes);
    static std::string read(const std::filesystem::path &file);

private:
    std::filesystem::path before_;
    std::filesystem::path root_;
};

} // namespace contract
