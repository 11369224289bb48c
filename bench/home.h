// A temporary home with a database of its own, in whose bin/ the benchmarks run.
#pragma once

#include <string>

namespace bench {

[[noreturn]] void die(const std::string &why);

class Home {
public:
    Home();  // makes it, enters it and fills the database; ends the program with a message where it cannot
    ~Home(); // removes it
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;

private:
    std::string path_;
};

} // namespace bench
