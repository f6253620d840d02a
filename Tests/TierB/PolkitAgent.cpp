// SPDX-License-Identifier: Apache-2.0

// A polkit agent for its session. Answers every prompt with the given word, cancels it
// ("--cancel"), or leaves it open ("--wait"); prints what it is asked.

#include <iostream>
#include <string>

// GObject's C headers use old-style casts.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
#define POLKIT_AGENT_I_KNOW_API_IS_SUBJECT_TO_CHANGE
#include <polkitagent/polkitagent.h>
#pragma GCC diagnostic pop
#include <unistd.h>

namespace {

std::string answer;

/// One prompt, until the password helper has finished.
struct Prompt {
    GTask* task = nullptr;
    PolkitAgentSession* session = nullptr;
};

void onRequest(PolkitAgentSession* session, const char* /*text*/, gboolean /*isEchoOn*/,
               gpointer /*unused*/) {
    polkit_agent_session_response(session, answer.c_str());
}

void onCompleted(PolkitAgentSession* session, gboolean /*hasGained*/, gpointer data) {
    auto* prompt = static_cast<Prompt*>(data);
    g_task_return_boolean(prompt->task, 1);
    g_object_unref(prompt->task);
    g_object_unref(session);
    delete prompt;
}

void refuse(GTask* task) {
    g_task_return_new_error(task, POLKIT_ERROR, POLKIT_ERROR_CANCELLED, "cancelled");
    g_object_unref(task);
}

void onWithdrawn(GCancellable* /*unused*/, gpointer task) {
    std::cout << "withdrawn" << '\n' << std::flush;
    refuse(static_cast<GTask*>(task));
}

void initiate(PolkitAgentListener* listener, const char* action, const char* message,
              const char* /*icon*/, PolkitDetails* /*details*/, const char* cookie,
              GList* identities, GCancellable* cancellable, GAsyncReadyCallback callback,
              gpointer data) {
    std::cout << action << ": " << message << '\n' << std::flush;
    GTask* task = g_task_new(listener, nullptr, callback, data);
    if (answer == "--cancel") return refuse(task);
    if (answer == "--wait") {
        g_cancellable_connect(cancellable, reinterpret_cast<GCallback>(&onWithdrawn), task,
                              nullptr);
        return;
    }
    auto* session =
        polkit_agent_session_new(static_cast<PolkitIdentity*>(identities->data), cookie);
    auto* prompt = new Prompt{.task = task, .session = session};
    const auto connect = [&](const char* signal, auto handler) {
        g_signal_connect_data(session, signal, reinterpret_cast<GCallback>(handler), prompt,
                              nullptr, GConnectFlags{});
    };
    connect("request", &onRequest);
    connect("completed", &onCompleted);
    polkit_agent_session_initiate(session);
}

gboolean finish(PolkitAgentListener* /*unused*/, GAsyncResult* result, GError** error) {
    return g_task_propagate_boolean(reinterpret_cast<GTask*>(result), error);
}

void initializeClass(gpointer instanceClass, gpointer /*unused*/) {
    auto* listener = static_cast<PolkitAgentListenerClass*>(instanceClass);
    listener->initiate_authentication = &initiate;
    listener->initiate_authentication_finish = &finish;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    answer = arguments[1];
    const GType type = g_type_register_static_simple(
        POLKIT_AGENT_TYPE_LISTENER, "MarrowbyTestAgent", sizeof(PolkitAgentListenerClass),
        &initializeClass, sizeof(PolkitAgentListener), nullptr, GTypeFlags{});
    auto* listener = static_cast<PolkitAgentListener*>(g_object_new(type, nullptr));
    PolkitSubject* session = polkit_unix_session_new_for_process_sync(getpid(), nullptr, nullptr);
    if (session == nullptr ||
        polkit_agent_listener_register(listener, POLKIT_AGENT_REGISTER_FLAGS_NONE, session, nullptr,
                                       nullptr, nullptr) == nullptr) {
        std::cout << "refused" << '\n' << std::flush;
        return 1;
    }
    std::cout << "ready" << '\n' << std::flush;
    g_main_loop_run(g_main_loop_new(nullptr, 0));
}
