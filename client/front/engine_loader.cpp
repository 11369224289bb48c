#include "engine_loader.h"

#include <algorithm>
#include <dlfcn.h>
#include <mutex>

#include "config.h"
#include "errors.h"

namespace ormel::client {

namespace {

// The folder that holds the engines: beside this library, wherever it was put.
std::string engineFolder() {
    Dl_info self = {};
    if (dladdr(reinterpret_cast<const void *>(&engineFolder), &self) == 0 || self.dli_fname == nullptr)
        fail(kConfiguration, "the folder of libqdclient.so cannot be found");
    const std::string file = self.dli_fname;
    const size_t slash = file.rfind('/');
    return (slash == std::string::npos ? std::string(".") : file.substr(0, slash)) + "/ormeldb/engines/";
}

// Only a plain word names an engine: the name becomes part of a path.
bool isPlainWord(const std::string &name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    });
}

Engine *open(const std::string &name) {
    if (!isPlainWord(name))
        fail(kConfiguration,
             "db.driver in " + std::string(kConfigFile) + " is not the name of an engine: " + name + "; sqlite is one");
    const std::string file = engineFolder() + name + ".so";
    // Never unloaded: connections and their destructors live in it.
    void *library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        fail(kConfiguration, "the database engine " + name + " cannot be loaded: " + dlerror() +
                                 "; install what it needs, or set db.driver in " + kConfigFile +
                                 " to an engine that is installed");
    const auto entry = reinterpret_cast<EngineEntry>(dlsym(library, kEngineEntry));
    Engine *engine = entry != nullptr ? entry() : nullptr;
    if (engine == nullptr)
        fail(kConfiguration, file + " is not a database engine of this client");
    return engine;
}

} // namespace

Engine &loadEngine(const Settings &settings) {
    static std::mutex mutex;
    static std::map<std::string, Engine *> loaded;
    const bool embedded = settings.host.empty() && settings.get("db.host", "").empty();
    const std::string name = settings.get("db.driver", embedded ? "sqlite" : "postgres");
    const std::lock_guard lock(mutex);
    Engine *&engine = loaded[name];
    if (engine == nullptr)
        engine = open(name);
    return *engine;
}

} // namespace ormel::client
