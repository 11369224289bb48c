#include "client_double.h"

#include <cstring>

#include "client_script.h"

namespace unit {

namespace {

template <class T> std::string Raw(T value) {
    std::string bytes(sizeof(value), '\0');
    std::memcpy(bytes.data(), &value, sizeof(value));
    return bytes;
}

} // namespace

Cell Null() {
    return Cell{.bytes = "", .isNull = true};
}
Cell Text(const std::string &text) {
    return Cell{.bytes = text};
}
Cell Int32(int32_t value) {
    return Cell{.bytes = Raw(value)};
}
Cell Int64(int64_t value) {
    return Cell{.bytes = Raw(value)};
}
Cell Lob(const std::string &content, uint32_t size) {
    return Cell{.bytes = content, .size = size};
}

ClientDouble::ClientDouble() : impl_(std::make_unique<Impl>()) {}
ClientDouble::~ClientDouble() = default;

ClientDouble &Client() {
    static ClientDouble client;
    return client;
}

void ClientDouble::Reset() {
    impl_ = std::make_unique<Impl>();
    status = kClientStatus;
    errorCode = 942;
    errorText = "no such table";
    shortWrite = 0;
}

void ClientDouble::On(const std::string &prefix, Answer answer) {
    std::lock_guard guard(impl_->mutex);
    impl_->rules.emplace_back(prefix, std::move(answer));
}

void ClientDouble::Fail(const std::string &operation, int n) {
    std::lock_guard guard(impl_->mutex);
    impl_->failures[operation] = {n - 1, false};
}

void ClientDouble::FailFrom(const std::string &operation, int n) {
    std::lock_guard guard(impl_->mutex);
    impl_->failures[operation] = {n - 1, true};
}

void ClientDouble::FailNothing() {
    std::lock_guard guard(impl_->mutex);
    impl_->failures.clear();
}

void ClientDouble::Hook(const std::string &operation, std::function<void()> hook) {
    std::lock_guard guard(impl_->mutex);
    impl_->hooks[operation] = std::move(hook);
}

std::vector<std::string> ClientDouble::Calls() const {
    std::lock_guard guard(impl_->mutex);
    return impl_->calls;
}

std::vector<std::string> ClientDouble::CallsButReads() const {
    std::vector<std::string> kept;
    for (const std::string &call : Calls()) {
        auto is = [&](const char *operation) { return call.rfind(operation, 0) == 0; };
        if (!is("fetch") && !is("get_column") && !is("desc_column") && !is("get_affected") && !is("read_")) {
            kept.push_back(call);
        }
    }
    return kept;
}

int ClientDouble::Count(const std::string &operation) const {
    int count = 0;
    for (const std::string &call : Calls()) {
        count += call.rfind(operation + "(", 0) == 0 ? 1 : 0;
    }
    return count;
}

std::vector<std::string> ClientDouble::Failed() const {
    std::lock_guard guard(impl_->mutex);
    return impl_->failed;
}

void ClientDouble::ForgetCalls() {
    std::lock_guard guard(impl_->mutex);
    impl_->calls.clear();
    impl_->failed.clear();
    impl_->bounds.clear();
}

std::vector<Bound> ClientDouble::Bounds() const {
    std::lock_guard guard(impl_->mutex);
    return impl_->bounds;
}

int ClientDouble::LiveConnections() const {
    return impl_->Live('c');
}
int ClientDouble::LiveStatements() const {
    return impl_->Live('s');
}

void *ClientDouble::Handle(const std::string &name) const {
    std::lock_guard guard(impl_->mutex);
    for (auto &handle : impl_->handles) {
        if (handle->name == name) {
            return handle.get();
        }
    }
    return nullptr;
}

} // namespace unit
