// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/SdBus.h"

#include <dlfcn.h>

namespace platform {
namespace {

class Library {
public:
    // Never closed: what it has started may still be running.
    explicit Library(const char* name)
        : m_handle(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
        noteFailure(m_handle);
    }

    template <class Function>
    void find(Function& function, const char* name) {
        void* const symbol = m_handle == nullptr ? nullptr : ::dlsym(m_handle, name);
        noteFailure(symbol);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): dlsym knows no functions
        function = reinterpret_cast<Function>(symbol);
    }

    [[nodiscard]] const std::string& failure() const { return m_failure; }

private:
    // The first failure is the one that explains the others.
    void noteFailure(const void* result) {
        if (result == nullptr && m_failure.empty()) {
            const char* const reason = ::dlerror(); // NOLINT(concurrency-mt-unsafe): of this thread
            m_failure = reason == nullptr ? "libsystemd is not usable" : reason;
        }
    }

    std::string m_failure;
    void* m_handle;
};

std::variant<SdBus, std::string> loaded() {
    Library library("libsystemd.so.0");
    SdBus bus{};
    library.find(bus.openUser, "sd_bus_open_user");
    library.find(bus.openSystem, "sd_bus_open_system");
    library.find(bus.closeUnref, "sd_bus_close_unref");
    library.find(bus.isReady, "sd_bus_is_ready");
    library.find(bus.getFd, "sd_bus_get_fd");
    library.find(bus.process, "sd_bus_process");
    library.find(bus.wait, "sd_bus_wait");
    library.find(bus.send, "sd_bus_send");
    library.find(bus.messageNewMethodCall, "sd_bus_message_new_method_call");
    library.find(bus.messageUnref, "sd_bus_message_unref");
    library.find(bus.messageSetAutoStart, "sd_bus_message_set_auto_start");
    library.find(bus.messageOpenContainer, "sd_bus_message_open_container");
    library.find(bus.messageCloseContainer, "sd_bus_message_close_container");
    library.find(bus.messageAppendStringSpace, "sd_bus_message_append_string_space");
    library.find(bus.messageAppendBasic, "sd_bus_message_append_basic");
    library.find(bus.messageAppendArray, "sd_bus_message_append_array");
    library.find(bus.messageIsMethodCall, "sd_bus_message_is_method_call");
    library.find(bus.messageReadBasic, "sd_bus_message_read_basic");
    library.find(bus.replyMethodError, "sd_bus_reply_method_error");
    library.find(bus.messageGetReplyCookie, "sd_bus_message_get_reply_cookie");
    library.find(bus.messageGetError, "sd_bus_message_get_error");
    library.find(bus.messageGetSender, "sd_bus_message_get_sender");
    library.find(bus.messageHasSignature, "sd_bus_message_has_signature");
    if (!library.failure().empty()) {
        return library.failure();
    }
    return bus;
}

} // namespace

const std::variant<SdBus, std::string>& SdBus::load() {
    static const auto functions = loaded();
    return functions;
}

} // namespace platform
