// What the scripted client keeps between its calls.
#ifndef UNIT_CLIENT_SCRIPT_H
#define UNIT_CLIENT_SCRIPT_H

#include <algorithm>

#include <gtest/gtest.h>

#include "client_double.h"

namespace unit {

struct Failure {
    int after = 0; // calls that still succeed
    bool lasting = false;
};

struct ScriptHandle {
    std::string name;
    bool live = true;
    bool connected = false;
    ScriptHandle *parent = nullptr;
    Answer answer;
    size_t next = 0; // row that the next fetch gives
    const char *lobs = nullptr;
};

class ClientDouble::Impl {
public:
    // Counts and records a call; false when it is one that fails.
    bool Called(const std::string &operation, const std::string &arguments) {
        std::function<void()> hook;
        {
            std::lock_guard guard(mutex);
            calls.push_back(operation + "(" + arguments + ")");
            if (auto found = hooks.find(operation); found != hooks.end()) {
                hook = found->second;
            }
        }
        if (hook) {
            hook();
        }
        std::lock_guard guard(mutex);
        bool refused = Due(operation);
        refused = Due("") || refused;
        if (refused) {
            failed.push_back(operation + "(" + arguments + ")");
        }
        return !refused;
    }

    // Counts a call against the failure that is set for an operation, or for all of them; whether it is one that fails.
    bool Due(const std::string &operation) {
        auto found = failures.find(operation);
        if (found == failures.end() || found->second.after-- > 0) {
            return false;
        }
        if (found->second.lasting) {
            found->second.after = 0;
        } else {
            failures.erase(found);
        }
        return true;
    }

    ScriptHandle *New(char kind, ScriptHandle *parent) {
        std::lock_guard guard(mutex);
        auto same = std::count_if(handles.begin(), handles.end(), [&](const auto &h) { return h->name[0] == kind; });
        handles.push_back(std::make_unique<ScriptHandle>());
        handles.back()->name = kind + std::to_string(same + 1);
        handles.back()->parent = parent;
        return handles.back().get();
    }

    // The handle behind a pointer of the library; one that is not live is the library's mistake.
    ScriptHandle *Find(void *pointer, char kind) {
        std::lock_guard guard(mutex);
        for (auto &handle : handles) {
            if (handle.get() == pointer && handle->name[0] == kind) {
                EXPECT_TRUE(handle->live) << handle->name << " is used after it was freed";
                EXPECT_TRUE(handle->parent == nullptr || handle->parent->live)
                    << handle->name << " is used after its connection was freed";
                return handle.get();
            }
        }
        ADD_FAILURE() << pointer << " is no handle of kind " << kind;
        static ScriptHandle nobody;
        nobody = ScriptHandle();
        nobody.name = "?";
        return &nobody;
    }

    int Live(char kind) const {
        std::lock_guard guard(mutex);
        return static_cast<int>(std::count_if(handles.begin(), handles.end(),
                                              [&](const auto &h) { return h->live && h->name[0] == kind; }));
    }

    const Answer *AnswerOf(const std::string &sql) {
        std::lock_guard guard(mutex);
        for (auto rule = rules.rbegin(); rule != rules.rend(); ++rule) {
            if (sql.compare(0, rule->first.size(), rule->first) == 0) {
                return &rule->second;
            }
        }
        static const Answer nothing;
        return &nothing;
    }

    mutable std::mutex mutex;
    std::vector<std::string> calls;
    std::vector<std::string> failed;
    std::vector<std::pair<std::string, Answer>> rules;
    std::map<std::string, Failure> failures;
    std::map<std::string, std::function<void()>> hooks;
    std::vector<std::unique_ptr<ScriptHandle>> handles;
    std::vector<Bound> bounds;
};

} // namespace unit

#endif
