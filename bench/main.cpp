#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include <ormeldb.h>
#include <ormeldb/platform/decrypt.h>

#include "database.h"
#include "home.h"

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    const bench::Home home;
    // The password file was made after the libraries were loaded.
    std::strcpy(reinterpret_cast<char *>(g_decrypt_info_s) + ORMEL_DECRYPT_PASSWORD_OFFSET, bench::password().c_str());
    if (ORMEL_Init() != ORMEL_OK) {
        std::fputs("ormel_bench: ormeldb does not start\n", stderr);
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    ORMEL_UnInit();
    return 0;
}
