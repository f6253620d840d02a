// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Secrets/SecretServiceKeyStore.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <expected>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <gio/gio.h>
#include <libsecret/secret.h>

namespace marrowby {

namespace {

constexpr const char* serviceName = "org.freedesktop.secrets";
constexpr const char* servicePath = "/org/freedesktop/secrets";
constexpr const char* serviceInterface = "org.freedesktop.Secret.Service";
constexpr const char* collectionInterface = "org.freedesktop.Secret.Collection";
constexpr const char* itemInterface = "org.freedesktop.Secret.Item";
constexpr const char* promptInterface = "org.freedesktop.Secret.Prompt";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* noObject = "/";
constexpr const char* contentType = "application/octet-stream";

constexpr unsigned busFlags =
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION;

// Replies take milliseconds, activation a moment; only a hung service takes longer.
constexpr int timeoutMilliseconds = 10'000;

constexpr auto noSessionBus = Phrase("There’s no session bus, so no keyring can be reached.");
constexpr auto noService =
    Phrase("No Secret Service is running. Install the package gnome-keyring, then log in again.");
constexpr auto noKeyring = Phrase(
    "There’s no keyring yet. Log in again with your password, or make one in Passwords and Keys "
    "(package seahorse).");
constexpr auto locked = Phrase("Your keyring is locked. Unlock it, then try again.");
constexpr auto wouldAsk = Phrase("Your keyring wants to ask you first. Unlock it, then try again.");

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* value) const {
        release(value);
    }
};
template <typename T>
using Object = std::unique_ptr<T, Releaser<g_object_unref>>;
using Variant = std::unique_ptr<GVariant, Releaser<g_variant_unref>>;
using Value = std::unique_ptr<SecretValue, Releaser<secret_value_unref>>;
using Error = std::unique_ptr<GError, Releaser<g_error_free>>;

/// A private main context: no other thread runs it. Runs what is pending before release, or its
/// objects would leak.
struct ContextReleaser {
    void operator()(GMainContext* context) const {
        while (g_main_context_iteration(context, 0) != 0) {
        }
        g_main_context_pop_thread_default(context);
        g_main_context_unref(context);
    }
};
using Context = std::unique_ptr<GMainContext, ContextReleaser>;

Context makeContext() {
    Context context(g_main_context_new());
    g_main_context_push_thread_default(context.get());
    return context;
}

/// Receives a GError and frees it.
class ErrorSlot {
  public:
    ErrorSlot() = default;
    ErrorSlot(const ErrorSlot&) = delete;
    ErrorSlot& operator=(const ErrorSlot&) = delete;
    ~ErrorSlot() { g_clear_error(&error_); }
    operator GError**() { return &error_; }
    [[nodiscard]] const GError* get() const { return error_; }

  private:
    GError* error_ = nullptr;
};

/// A floating reference.
GVariant* attributesOf(const SecretServiceKeyStore::Item& item) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
    g_variant_builder_add(&builder, "{ss}", "service", item.service.c_str());
    g_variant_builder_add(&builder, "{ss}", "account", item.account.c_str());
    return g_variant_builder_end(&builder);
}

Value secretOf(std::span<const std::uint8_t> bytes) {
    return Value(secret_value_new(reinterpret_cast<const char*>(bytes.data()),
                                  static_cast<gssize>(bytes.size()), contentType));
}

// libsecret uses GLib's shared connection, which exits the process when the bus closes and is never
// renewed. This GObject subclass takes the connection it is given.

GObject* constructOnAnyConnection(GType type, guint count, GObjectConstructParam* parameters) {
    auto* parent = static_cast<GObjectClass*>(g_type_class_peek(SECRET_TYPE_SERVICE));
    GObject* service = parent->constructor(type, count, parameters);
    g_object_set(service, "g-bus-type", G_BUS_TYPE_NONE, nullptr);
    return service;
}

void initializeClass(gpointer instanceClass, gpointer /*unused*/) {
    static_cast<GObjectClass*>(instanceClass)->constructor = &constructOnAnyConnection;
}

GType secretServiceType() {
    static const GType type = g_type_register_static_simple(
        SECRET_TYPE_SERVICE, "MarrowbySecretService", sizeof(SecretServiceClass), &initializeClass,
        sizeof(SecretService), nullptr, GTypeFlags{});
    return type;
}

std::string pathIn(const Variant& reply, std::size_t index) {
    const Variant child(g_variant_get_child_value(reply.get(), index));
    return g_variant_get_string(child.get(), nullptr);
}

std::vector<std::string> pathsIn(const Variant& reply, std::size_t index) {
    const Variant list(g_variant_get_child_value(reply.get(), index));
    std::vector<std::string> paths(g_variant_n_children(list.get()));
    for (std::size_t i = 0; i < paths.size(); ++i)
        paths[i] = pathIn(list, i);
    return paths;
}

/// A sentence for the user.
using Failure = std::string;

Failure failureOf(const GError* error) {
    if (error == nullptr) return translated("The keyring gave no answer.");
    for (const GDBusError code :
         {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER,
          G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND, G_DBUS_ERROR_SPAWN_EXEC_FAILED,
          G_DBUS_ERROR_SPAWN_FAILED, G_DBUS_ERROR_SPAWN_CHILD_EXITED,
          G_DBUS_ERROR_SPAWN_CHILD_SIGNALED}) {
        if (g_error_matches(error, G_DBUS_ERROR, code)) return translated(noService);
    }
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CLOSED)) return translated(noSessionBus);
    const std::unique_ptr<char, Releaser<g_free>> remote(g_dbus_error_get_remote_error(error));
    if (remote && std::string_view(remote.get()) == "org.freedesktop.Secret.Error.IsLocked")
        return translated(locked);
    const Error copy(g_error_copy(error));
    g_dbus_error_strip_remote_error(copy.get());
    return copy->message;
}

std::unexpected<KeychainError> refusal(Failure failure) {
    return std::unexpected<KeychainError>(
        KeychainError::Status{.code = 0, .message = std::move(failure)});
}

}  // namespace

/// One bus connection with one service session.
class SecretServiceKeyStore::Conversation {
  public:
    template <typename T>
    using Result = std::expected<T, Failure>;

    static Result<Conversation> begin(const std::string& address) {
        if (address.empty()) return std::unexpected<Failure>(translated(noSessionBus));
        Context context = makeContext();
        // C flags combined in an enumeration.
        const auto flags = static_cast<GDBusConnectionFlags>(busFlags);
        Object<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
            address.c_str(), flags, nullptr, nullptr, nullptr));
        if (!connection) return std::unexpected<Failure>(translated(noSessionBus));
        return Conversation(std::move(context), std::move(connection));
    }

    Conversation(Conversation&&) noexcept = default;
    Conversation& operator=(Conversation&&) = delete;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;
    ~Conversation() {
        service_.reset();
        if (connection_) g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    }

    struct Items {
        std::vector<std::string> open;
        /// Locked collections may hold more.
        bool someAreLocked = false;
    };

    /// A locked keyring lists no items or only some, without an error.
    Result<Items> find(const Item& item) {
        const auto keyring = defaultKeyring();
        if (!keyring) return std::unexpected(keyring.error());
        const bool hasKeyring = *keyring != noObject;
        const auto isLocked = hasKeyring ? isKeyringLocked(*keyring) : Result<bool>(false);
        if (!isLocked) return std::unexpected(isLocked.error());
        const auto found = call(servicePath, serviceInterface, "SearchItems",
                                g_variant_new("(@a{ss})", attributesOf(item)), "(aoao)");
        if (!found) return std::unexpected(found.error());
        Items items{.open = pathsIn(*found, 0), .someAreLocked = !pathsIn(*found, 1).empty()};
        if (items.open.empty()) items.someAreLocked |= *isLocked;
        return items;
    }

    Result<Value> secret(const std::string& item) {
        if (auto begun = ensureSession(); !begun) return std::unexpected(std::move(begun.error()));
        ErrorSlot error;
        Value value(secret_service_get_secret_for_dbus_path_sync(service_.get(), item.c_str(),
                                                                 nullptr, error));
        if (!value) return std::unexpected(failureOf(error.get()));
        return value;
    }

    Result<void> setSecret(const std::string& item, std::span<const std::uint8_t> bytes) {
        if (auto begun = ensureSession(); !begun) return begun;
        const auto set = call(item.c_str(), itemInterface, "SetSecret",
                              g_variant_new("(@(oayays))", encoded(bytes)), "()");
        if (!set) return std::unexpected(set.error());
        return {};
    }

    Result<void> create(const Item& item, std::span<const std::uint8_t> bytes) {
        const auto keyring = defaultKeyring();
        if (!keyring) return std::unexpected(keyring.error());
        if (*keyring == noObject) return std::unexpected<Failure>(translated(noKeyring));
        const auto isLocked = isKeyringLocked(*keyring);
        if (!isLocked) return std::unexpected(isLocked.error());
        if (*isLocked) return std::unexpected<Failure>(translated(locked));
        if (auto begun = ensureSession(); !begun) return begun;

        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Label",
                              g_variant_new_string("Marrowby Unlock"));
        g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Attributes",
                              attributesOf(item));
        const auto created =
            call(keyring->c_str(), collectionInterface, "CreateItem",
                 g_variant_new("(@a{sv}@(oayays)b)", g_variant_builder_end(&properties),
                               encoded(bytes), gboolean{false}),
                 "(oo)");
        if (!created) return std::unexpected(created.error());
        return refusePrompt(pathIn(*created, 1));
    }

    Result<void> remove(const std::string& item) {
        const auto removed = call(item.c_str(), itemInterface, "Delete", nullptr, "(o)");
        if (!removed) return std::unexpected(removed.error());
        return refusePrompt(pathIn(*removed, 0));
    }

  private:
    Conversation(Context context, Object<GDBusConnection> connection)
        : context_(std::move(context)), connection_(std::move(connection)) {}

    Result<Variant> call(const char* path, const char* interface, const char* method,
                         GVariant* arguments, const char* replyType) {
        ErrorSlot error;
        Variant reply(g_dbus_connection_call_sync(connection_.get(), serviceName, path, interface,
                                                  method, arguments, G_VARIANT_TYPE(replyType),
                                                  G_DBUS_CALL_FLAGS_NONE, timeoutMilliseconds,
                                                  nullptr, error));
        if (!reply) return std::unexpected(failureOf(error.get()));
        return reply;
    }

    Result<std::string> defaultKeyring() {
        const auto reply = call(servicePath, serviceInterface, "ReadAlias",
                                g_variant_new("(s)", SECRET_COLLECTION_DEFAULT), "(o)");
        if (!reply) return std::unexpected(reply.error());
        return pathIn(*reply, 0);
    }

    Result<bool> isKeyringLocked(const std::string& keyring) {
        const auto reply = call(keyring.c_str(), propertiesInterface, "Get",
                                g_variant_new("(ss)", collectionInterface, "Locked"), "(v)");
        if (!reply) return std::unexpected(reply.error());
        const Variant boxed(g_variant_get_child_value(reply->get(), 0));
        const Variant value(g_variant_get_variant(boxed.get()));
        return !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) ||
               g_variant_get_boolean(value.get()) != 0;
    }

    /// Negotiates the key that encrypts secrets on the bus.
    Result<void> ensureSession() {
        ErrorSlot error;
        if (!service_) {
            service_.reset(static_cast<SecretService*>(g_initable_new(
                secretServiceType(), nullptr, error, "g-connection", connection_.get(),
                "g-default-timeout", timeoutMilliseconds, nullptr)));
        }
        if (!service_ || !secret_service_ensure_session_sync(service_.get(), nullptr, error)) {
            return std::unexpected(failureOf(error.get()));
        }
        return {};
    }

    GVariant* encoded(std::span<const std::uint8_t> bytes) {
        return secret_service_encode_dbus_secret(service_.get(), secretOf(bytes).get());
    }

    Result<void> refusePrompt(const std::string& prompt) {
        if (prompt == noObject) return {};
        (void)call(prompt.c_str(), promptInterface, "Dismiss", nullptr, "()").has_value();
        return std::unexpected<Failure>(translated(wouldAsk));
    }

    // Declared first so that it is destroyed last.
    Context context_;
    Object<GDBusConnection> connection_;
    Object<SecretService> service_;
};

bool SecretServiceKeyStore::hasKey() {
    auto conversation = Conversation::begin(address_);
    if (!conversation) return true;
    const auto items = conversation->find(item_);
    return !items || !items->open.empty() || items->someAreLocked;
}

std::expected<std::optional<SecretBytes>, KeychainError> SecretServiceKeyStore::loadKey() {
    auto conversation = Conversation::begin(address_);
    if (!conversation) return refusal(conversation.error());
    const auto items = conversation->find(item_);
    if (!items) return refusal(items.error());
    if (items->open.empty()) {
        if (items->someAreLocked) return refusal(translated(locked));
        return std::nullopt;
    }
    const auto value = conversation->secret(items->open.front());
    if (!value) return refusal(value.error());
    gsize size = 0;
    const char* bytes = secret_value_get(value->get(), &size);
    auto copy = SecretBytes::copyOf({reinterpret_cast<const std::uint8_t*>(bytes), size});
    if (!copy) return refusal(translated(description(copy.error())));
    return *std::move(copy);
}

std::expected<void, KeychainError> SecretServiceKeyStore::saveKey(
    std::span<const std::uint8_t> key) {
    auto conversation = Conversation::begin(address_);
    if (!conversation) return refusal(conversation.error());
    const auto items = conversation->find(item_);
    if (!items) return refusal(items.error());
    for (const std::string& item : items->open) {
        const auto set = conversation->setSecret(item, key);
        if (!set) return refusal(set.error());
    }
    if (items->someAreLocked) return refusal(translated(locked));
    if (!items->open.empty()) return {};
    const auto created = conversation->create(item_, key);
    if (!created) return refusal(created.error());
    return {};
}

std::expected<void, KeychainError> SecretServiceKeyStore::deleteKey() {
    auto conversation = Conversation::begin(address_);
    if (!conversation) return refusal(conversation.error());
    const auto items = conversation->find(item_);
    if (!items) return refusal(items.error());
    for (const std::string& item : items->open) {
        const auto removed = conversation->remove(item);
        if (!removed) return refusal(removed.error());
    }
    if (items->someAreLocked) return refusal(translated(locked));
    return {};
}

}  // namespace marrowby
