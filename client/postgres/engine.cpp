// The engine of PostgreSQL servers.
#include "engine.h"

#include "connect.h"
#include "connection.h"
#include "settings.h"

namespace ormel::client::postgres {

namespace {

class PostgresEngine final : public Engine {
public:
    Dialect dialect() const override { return {'$', false, false, true, true, true}; }

    std::unique_ptr<Connection> connect(const Settings &settings) override {
        return std::make_unique<PostgresConnection>(openConnection(settings), connectTimeout(settings));
    }
};

} // namespace

} // namespace ormel::client::postgres

extern "C" __attribute__((visibility("default"))) ormel::client::Engine *ormel_engine() {
    static ormel::client::postgres::PostgresEngine engine;
    return &engine;
}
