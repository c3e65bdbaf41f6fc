// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <variant>

#include <systemd/sd-bus.h>

namespace platform {

/// The functions of sd-bus in use, loaded when they are first wanted: a program that talks to no
/// bus does not load libsystemd and the libraries behind it.
struct SdBus {
    decltype(&::sd_bus_open_user) openUser;
    decltype(&::sd_bus_open_system) openSystem;
    decltype(&::sd_bus_close_unref) closeUnref;
    decltype(&::sd_bus_is_ready) isReady;
    decltype(&::sd_bus_get_fd) getFd;
    decltype(&::sd_bus_process) process;
    decltype(&::sd_bus_wait) wait;
    decltype(&::sd_bus_send) send;
    decltype(&::sd_bus_message_new_method_call) messageNewMethodCall;
    decltype(&::sd_bus_message_unref) messageUnref;
    decltype(&::sd_bus_message_set_auto_start) messageSetAutoStart;
    decltype(&::sd_bus_message_open_container) messageOpenContainer;
    decltype(&::sd_bus_message_close_container) messageCloseContainer;
    decltype(&::sd_bus_message_append_string_space) messageAppendStringSpace;
    decltype(&::sd_bus_message_append_basic) messageAppendBasic;
    decltype(&::sd_bus_message_append_array) messageAppendArray;
    decltype(&::sd_bus_message_is_method_call) messageIsMethodCall;
    decltype(&::sd_bus_message_read_basic) messageReadBasic;
    decltype(&::sd_bus_reply_method_error) replyMethodError;
    decltype(&::sd_bus_message_get_reply_cookie) messageGetReplyCookie;
    decltype(&::sd_bus_message_get_error) messageGetError;
    decltype(&::sd_bus_message_get_sender) messageGetSender;
    decltype(&::sd_bus_message_has_signature) messageHasSignature;

    /// The functions, valid for the life of the process, or why they cannot be had. Any thread.
    [[nodiscard]] static const std::variant<SdBus, std::string>& load();
};

} // namespace platform
