// SPDX-License-Identifier: Apache-2.0
// Usage: test_application FOLDER [BEHAVIOUR [ARGUMENT...]]
// Stands for the file manager: owns its name on the session bus and answers scripts, well or badly.
// In FOLDER it keeps "script.N" and "options.N" of the Nth script, byte for byte, "activated" when
// it was asked to come forward, and "ready", its process number, once it has the name.
//
//   answer [TEXT]       a result (the default)
//   error TEXT          an error of its own
//   error-name NAME [TEXT]  an error of that name, without a text or with one
//   number | nothing | two-texts    a result of another form
//   huge SIZE           an error whose text has so many bytes
//   huge-answer SIZE    a result of so many bytes
//   ask-back            an error whose text is the name of the error that qm gives it first
//   silent              no answer at all
//   exit                ends in the middle of the call
//   refuse-and-exit     answers "test is not running" and ends
//   no-interface        has the name, and an object without the interface
//   no-object           has the name and nothing else
//   late MILLISECONDS   waits before it takes the name
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <unistd.h>

#include <gio/gio.h>

namespace {

using Behaviour = std::function<void(GDBusMethodInvocation*)>;

const char* const identifier = QM_APPLICATION_ID;
const char* const objectPath = QM_APPLICATION_PATH;

const char* const applicationInterface = R"(<node>
  <interface name="org.freedesktop.Application">
    <method name="Activate"><arg name="platform_data" type="a{sv}" direction="in"/></method>
  </interface>
</node>)";

struct State {
    std::string folder;
    Behaviour behaviour;
    int scripts = 0;
};

void write(const std::string& path, std::string_view contents) {
    // Under another name first, so that whoever waits for the file never sees half of it.
    const std::string draft = path + ".draft";
    std::ofstream(draft, std::ios::binary) << contents;
    static_cast<void>(std::rename(draft.c_str(), path.c_str()));
}

void answer(GDBusMethodInvocation* call, const char* text) {
    g_dbus_method_invocation_return_value(call, g_variant_new("(s)", text));
}

void refuse(GDBusMethodInvocation* call, const char* text) {
    g_dbus_method_invocation_return_dbus_error(call, "org.example.Error", text);
}

// GDBus always gives an error a text.
void refuseWithoutText(GDBusMethodInvocation* call, const char* name) {
    GDBusMessage* const reply = g_dbus_message_new_method_error_literal(
        g_dbus_method_invocation_get_message(call), name, "");
    g_dbus_message_set_body(reply, g_variant_new("()"));
    g_dbus_connection_send_message(g_dbus_method_invocation_get_connection(call), reply,
                                   G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(reply);
}

void answerInAnotherForm(GDBusMethodInvocation* call, GVariant* body) {
    GDBusMessage* const reply =
        g_dbus_message_new_method_reply(g_dbus_method_invocation_get_message(call));
    g_dbus_message_set_body(reply, body);
    g_dbus_connection_send_message(g_dbus_method_invocation_get_connection(call), reply,
                                   G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    g_object_unref(reply);
}

void askBack(GDBusMethodInvocation* call) {
    GError* error = nullptr;
    GVariant* const answered = g_dbus_connection_call_sync(
        g_dbus_method_invocation_get_connection(call), g_dbus_method_invocation_get_sender(call),
        "/", "org.freedesktop.DBus.Introspectable", "Introspect", nullptr, nullptr,
        G_DBUS_CALL_FLAGS_NONE, 10000, nullptr, &error);
    if (answered != nullptr) {
        g_variant_unref(answered);
        answer(call, "");
        return;
    }
    char* const name = g_dbus_error_get_remote_error(error);
    refuse(call, name == nullptr ? "no answer" : name);
    g_free(name);
    g_error_free(error);
}

Behaviour behaviourOf(const std::vector<std::string>& words) {
    const std::string name = words.empty() ? "answer" : words[0];
    const std::string first = words.size() > 1 ? words[1] : "";
    const std::string second = words.size() > 2 ? words[2] : "";
    const std::map<std::string, Behaviour> behaviours{
        {"answer", [first](auto* call) { answer(call, first.c_str()); }},
        {"late", [](auto* call) { answer(call, ""); }},
        {"error", [first](auto* call) { refuse(call, first.c_str()); }},
        {"error-name",
         [=, hasText = words.size() > 2](auto* call) {
             if (hasText) {
                 g_dbus_method_invocation_return_dbus_error(call, first.c_str(), second.c_str());
             } else {
                 refuseWithoutText(call, first.c_str());
             }
         }},
        {"number", [](auto* call) { answerInAnotherForm(call, g_variant_new("(i)", 7)); }},
        {"nothing", [](auto* call) { answerInAnotherForm(call, g_variant_new("()")); }},
        {"two-texts",
         [](auto* call) { answerInAnotherForm(call, g_variant_new("(ss)", "a", "b")); }},
        {"huge",
         [first](auto* call) { refuse(call, std::string(std::stoul("0" + first), 'x').c_str()); }},
        {"huge-answer",
         [first](auto* call) { answer(call, std::string(std::stoul("0" + first), 'x').c_str()); }},
        {"ask-back", askBack},
        {"silent", [](auto*) {}},
        {"exit", [](auto*) { std::_Exit(0); }},
        {"refuse-and-exit",
         [](auto* call) {
             GDBusConnection* const bus = g_dbus_method_invocation_get_connection(call);
             refuse(call, "test is not running");
             g_dbus_connection_flush_sync(bus, nullptr, nullptr);
             std::_Exit(0);
         }},
        {"no-interface", nullptr},
        {"no-object", nullptr},
    };
    const auto found = behaviours.find(name);
    if (found == behaviours.end()) {
        static_cast<void>(
            std::fprintf(stderr, "test_application: no behaviour %s\n", name.c_str()));
        std::exit(2);
    }
    return found->second;
}

void handleCall(GDBusConnection*, const char*, const char*, const char*, const char* method,
                GVariant* arguments, GDBusMethodInvocation* call, void* data) {
    State& state = *static_cast<State*>(data);
    if (std::string_view(method) == "Activate") {
        g_dbus_method_invocation_return_value(call, nullptr);
        char* const text = g_variant_print(arguments, TRUE);
        write(state.folder + "/activated", text);
        g_free(text);
        return;
    }
    const char* source = nullptr;
    GVariant* options = nullptr;
    g_variant_get(arguments, "(&s@a{sv})", &source, &options);
    char* const text = g_variant_print(options, FALSE);
    const std::string number = std::to_string(++state.scripts);
    write(state.folder + "/options." + number, text);
    write(state.folder + "/script." + number, source);
    g_free(text);
    g_variant_unref(options);
    state.behaviour(call);
}

void exportInterface(GDBusConnection* bus, const char* xml, State& state) {
    static const GDBusInterfaceVTable functions{handleCall, nullptr, nullptr, {}};
    GError* error = nullptr;
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(xml, &error);
    if (node == nullptr ||
        g_dbus_connection_register_object(bus, objectPath, node->interfaces[0], &functions, &state,
                                          nullptr, &error) == 0) {
        static_cast<void>(std::fprintf(stderr, "test_application: %s\n", error->message));
        std::exit(2);
    }
}

std::string contentsOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.empty()) {
        return 2;
    }
    const std::vector<std::string> behaviour(words.begin() + 1, words.end());
    const std::string name = behaviour.empty() ? "" : behaviour[0];
    State state{words[0], behaviourOf(behaviour)};
    if (name == "late") {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(behaviour.at(1))));
    }
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus == nullptr) {
        return 2;
    }
    // Objects before the name: whoever sees the name may call at once.
    if (name != "no-object") {
        exportInterface(bus, applicationInterface, state);
    }
    if (state.behaviour) {
        exportInterface(bus, contentsOf(QM_SCRIPTING_INTERFACE).c_str(), state);
    }
    g_bus_own_name_on_connection(
        bus, identifier, G_BUS_NAME_OWNER_FLAGS_NONE,
        [](GDBusConnection*, const char*, void* data) {
            write(static_cast<State*>(data)->folder + "/ready", std::to_string(getpid()));
        },
        [](GDBusConnection*, const char*, void*) { std::exit(3); }, &state, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
