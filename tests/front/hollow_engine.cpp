// A shared object among the engines that is none: it has no entry point.
extern "C" __attribute__((visibility("default"))) int not_an_engine() {
    return 0;
}
