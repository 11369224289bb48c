#include "support/engine.h"

#include <cstdlib>

namespace database {

const Engine &engine() {
    return std::getenv("ORMEL_POSTGRES_PORT") != nullptr ? postgresEngine() : sqliteEngine();
}

} // namespace database
