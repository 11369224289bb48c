// The servers' engine, as the suite must know it.
#pragma once

#include "support/engine.h"

namespace contract {

// Works on the server that the environment names, in a database of the program's own.
class PostgresEngine : public Engine {
public:
    const char *name() const override { return "postgres"; }
    const char *lacks(Feature feature) const override;

    std::string makeDatabase(const Home &home) override;
    Target target() const override;

    const char *realType() const override { return "double precision"; }
    const char *blobType() const override { return "bytea"; }

    std::vector<DeclaredType> declaredTypes() const override;
    std::vector<Expression> expressions() const override;
};

uint16_t serverPort();

// Runs a command that no transaction takes, past the client.
void runOnServer(const std::string &sql);

// Ends the server by a signal ("SIGQUIT": at once) and returns when it takes connections again.
void restartServer(const std::string &signal);

} // namespace contract
