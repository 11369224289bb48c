// The fixture of tests of the library itself, between which and the server a proxy stands.
#pragma once

#include "postgres/proxy.h"
#include "support/contract_test.h"

namespace contract {

class LibraryTest : public ContractTest {
protected:
    LibraryTest();
    ~LibraryTest() override;

    // Starts the library, with these lines in its configuration as well.
    void start(const std::string &lines);
    Proxy &proxy() { return proxy_; }

private:
    Proxy proxy_;
};

} // namespace contract
