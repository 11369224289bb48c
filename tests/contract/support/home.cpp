#include "support/home.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace contract {

namespace fs = std::filesystem;

Home::Home() : before_(fs::current_path()) {
    std::string name = fs::temp_directory_path() / "ormel_contract_XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary directory can be made: " + name);
    root_ = name;
    for (const char *folder : {"bin", "conf", "data"})
        fs::create_directory(root_ / folder);
    fs::current_path(root_ / "bin");
}

Home::~Home() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
    fs::remove_all(root_, ignored);
}

void Home::write(const fs::path &file, const std::string &bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string Home::read(const fs::path &file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace contract
