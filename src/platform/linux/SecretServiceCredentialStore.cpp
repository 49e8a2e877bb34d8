// GIO has a struct member named "signals": libsecret comes before any Qt header.
#include <libsecret/secret.h>

#include "SecretServiceCredentialStore.h"

#include "AppInfo.h"

#include <QLoggingCategory>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

using Outcome = CredentialStore::Outcome;
using Result = CredentialStore::Result;

Q_LOGGING_CATEGORY(lcSecretService, "quorla.secretservice")

namespace {

// Keyring calls answer in milliseconds; a service that takes longer is stuck or
// waiting for a dialog we must not wait for.
constexpr auto callLimit = std::chrono::seconds(5);
constexpr int callLimitMs = int(std::chrono::milliseconds(callLimit).count());
constexpr auto contentType = "text/plain";

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T *pointer) const
    {
        release(pointer);
    }
};
using ServicePtr = std::unique_ptr<SecretService, Releaser<&g_object_unref>>;
using ValuePtr = std::unique_ptr<SecretValue, Releaser<&secret_value_unref>>;
using HashPtr = std::unique_ptr<GHashTable, Releaser<&g_hash_table_unref>>;
using VariantPtr = std::unique_ptr<GVariant, Releaser<&g_variant_unref>>;

struct ItemList {
    GList *items = nullptr;
    ItemList() = default;
    ItemList(const ItemList &) = delete;
    ItemList &operator=(const ItemList &) = delete;
    ~ItemList() { g_list_free_full(items, g_object_unref); }
};

// Cancels the calls of one operation when they outlive callLimit. The synchronous
// libsecret calls run their own main loop, so only another thread can stop them;
// a cancelled prompt is dismissed rather than left on screen. (GDBus's own limit of
// 25 s still applies to a bus that accepts the connection but never says hello.)
class Deadline
{
public:
    Deadline()
        : m_cancellable(g_cancellable_new())
        , m_watchdog([this](std::stop_token stop) {
            std::unique_lock lock(m_mutex);
            if (!m_finished.wait_for(lock, stop, callLimit, [] { return false; }))
                if (!stop.stop_requested())
                    g_cancellable_cancel(m_cancellable);
        })
    {
    }
    Deadline(const Deadline &) = delete;
    Deadline &operator=(const Deadline &) = delete;
    ~Deadline()
    {
        m_watchdog.request_stop();
        m_watchdog.join();
        g_object_unref(m_cancellable);
    }

    [[nodiscard]] GCancellable *cancellable() const { return m_cancellable; }

private:
    GCancellable *m_cancellable;
    std::mutex m_mutex;
    std::condition_variable_any m_finished;
    std::jthread m_watchdog;
};

const SecretSchema *quorlaSchema()
{
    // Matched on service and account only, so an item made with secret-tool counts too.
    static SecretSchema *const schema =
        secret_schema_new(QUORLA_APP_ID, SECRET_SCHEMA_DONT_MATCH_NAME, "service", SECRET_SCHEMA_ATTRIBUTE_STRING,
                          "account", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return schema;
}

HashPtr attributesFor(const QString &service, const QString &account)
{
    HashPtr attributes(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    g_hash_table_insert(attributes.get(), g_strdup("service"), g_strdup(service.toUtf8().constData()));
    g_hash_table_insert(attributes.get(), g_strdup("account"), g_strdup(account.toUtf8().constData()));
    return attributes;
}

// Failing to reach the bus at all, or finding nobody serving org.freedesktop.secrets
// on it, is a normal desktop without a keyring, not a broken one.
bool meansNoSecretService(const GError &error, bool connecting)
{
    if (error.domain == G_IO_ERROR)
        return error.code == G_IO_ERROR_CLOSED || (connecting && error.code != G_IO_ERROR_CANCELLED);
    if (error.domain != G_DBUS_ERROR)
        return false;
    switch (error.code) {
    case G_DBUS_ERROR_SERVICE_UNKNOWN:
    case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
    case G_DBUS_ERROR_NO_SERVER:
    case G_DBUS_ERROR_DISCONNECTED:
    case G_DBUS_ERROR_SPAWN_EXEC_FAILED:
    case G_DBUS_ERROR_SPAWN_FORK_FAILED:
    case G_DBUS_ERROR_SPAWN_CHILD_EXITED:
    case G_DBUS_ERROR_SPAWN_CHILD_SIGNALED:
    case G_DBUS_ERROR_SPAWN_FAILED:
    case G_DBUS_ERROR_SPAWN_SERVICE_INVALID:
    case G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND:
        return true;
    default:
        return false;
    }
}

// One operation: its deadline, the shared connection to the service and the error
// of the last call.
class Conversation
{
public:
    Conversation()
    {
        m_service.reset(secret_service_get_sync(SECRET_SERVICE_NONE, cancellable(), &m_error));
    }
    Conversation(const Conversation &) = delete;
    Conversation &operator=(const Conversation &) = delete;
    ~Conversation() { g_clear_error(&m_error); }

    [[nodiscard]] bool isOpen() const { return m_service != nullptr; }
    [[nodiscard]] SecretService *service() const { return m_service.get(); }
    [[nodiscard]] GCancellable *cancellable() const { return m_deadline.cancellable(); }
    [[nodiscard]] GError **errorSlot()
    {
        g_clear_error(&m_error);
        return &m_error;
    }
    [[nodiscard]] bool failed() const { return m_error != nullptr; }

    [[nodiscard]] Result failure() const
    {
        if (!m_error)
            return {Outcome::failure, SECRET_ERROR_PROTOCOL};
        const bool unavailable = meansNoSecretService(*m_error, !isOpen());
        // GError messages name the call and the service, never the value.
        qCInfo(lcSecretService) << g_quark_to_string(m_error->domain) << m_error->code << m_error->message;
        return {unavailable ? Outcome::serviceUnavailable : Outcome::failure, m_error->code};
    }

    // Items of Quorla's schema with these attributes; never unlocks.
    bool search(const QString &service, const QString &account, SecretSearchFlags flags, ItemList *found)
    {
        const HashPtr attributes = attributesFor(service, account);
        found->items = secret_service_search_sync(m_service.get(), quorlaSchema(), attributes.get(), flags,
                                                  cancellable(), errorSlot());
        return !failed();
    }

    // The object path of the default collection, empty when there is none.
    bool defaultCollection(QByteArray *path)
    {
        const VariantPtr reply = callService("/org/freedesktop/secrets", "org.freedesktop.Secret.Service", "ReadAlias",
                                             g_variant_new("(s)", SECRET_COLLECTION_DEFAULT), "(o)");
        if (!reply)
            return false;
        const gchar *objectPath = nullptr;
        g_variant_get(reply.get(), "(&o)", &objectPath);
        *path = qstrcmp(objectPath, "/") == 0 ? QByteArray() : QByteArray(objectPath);
        return true;
    }

    bool isCollectionLocked(const QByteArray &path, bool *locked)
    {
        const VariantPtr reply =
            callService(path.constData(), "org.freedesktop.DBus.Properties", "Get",
                        g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Locked"), "(v)");
        if (!reply)
            return false;
        GVariant *value = nullptr;
        g_variant_get(reply.get(), "(v)", &value);
        const VariantPtr owned(value);
        *locked = !g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) || g_variant_get_boolean(value);
        return true;
    }

private:
    // A call whose reply GDBus has checked against replyType (null on failure).
    VariantPtr callService(const char *path, const char *interface, const char *method, GVariant *parameters,
                           const char *replyType)
    {
        GDBusProxy *proxy = G_DBUS_PROXY(m_service.get());
        return VariantPtr(g_dbus_connection_call_sync(g_dbus_proxy_get_connection(proxy),
                                                      g_dbus_proxy_get_name(proxy), path, interface, method,
                                                      parameters, G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE,
                                                      callLimitMs, cancellable(), errorSlot()));
    }

    Deadline m_deadline;
    ServicePtr m_service;
    GError *m_error = nullptr;
};

const Result lockedResult{Outcome::interactionNotAllowed, SECRET_ERROR_IS_LOCKED};

SecretItem *firstItem(const ItemList &list)
{
    return list.items ? static_cast<SecretItem *>(list.items->data) : nullptr;
}

ValuePtr secretValueFor(const QByteArray &value)
{
    return ValuePtr(secret_value_new(value.constData(), value.size(), contentType));
}

// Runs one operation on the shared connection. A connection made before the keyring
// restarted keeps talking to the old process and hears "unknown name" for ever: drop
// it and try once more on a fresh one.
template <typename Operation>
Result converse(Operation operation)
{
    for (int attempt = 0;; ++attempt) {
        Conversation conversation;
        const Result result = conversation.isOpen() ? operation(conversation) : conversation.failure();
        if (result.outcome != Outcome::serviceUnavailable || !conversation.isOpen() || attempt > 0)
            return result;
        secret_service_disconnect();
    }
}

// Runs use on the first matching item, when there is one and it is unlocked.
template <typename Use>
Result converseAboutItem(const QString &service, const QString &account, SecretSearchFlags flags, Use use)
{
    return converse([&](Conversation &conversation) -> Result {
        ItemList found;
        if (!conversation.search(service, account, flags, &found))
            return conversation.failure();
        SecretItem *item = firstItem(found);
        if (!item)
            return {Outcome::itemNotFound, 0};
        return secret_item_get_locked(item) ? lockedResult : use(conversation, item);
    });
}

} // namespace

Result SecretServiceCredentialStore::update(const QString &service, const QString &account, const QByteArray &value)
{
    return converseAboutItem(service, account, SECRET_SEARCH_NONE, [&](Conversation &conversation, SecretItem *item) {
        const ValuePtr secret = secretValueFor(value);
        secret_item_set_secret_sync(item, secret.get(), conversation.cancellable(), conversation.errorSlot());
        return conversation.failed() ? conversation.failure() : Result{};
    });
}

Result SecretServiceCredentialStore::add(const QString &service, const QString &account, const QByteArray &value)
{
    return converse([&](Conversation &conversation) -> Result {
        // Storing into a missing or locked collection would ask the user to create or
        // unlock one: check first and fail instead.
        QByteArray collection;
        if (!conversation.defaultCollection(&collection))
            return conversation.failure();
        if (collection.isEmpty())
            return {Outcome::failure, SECRET_ERROR_NO_SUCH_OBJECT};
        bool locked = true;
        if (!conversation.isCollectionLocked(collection, &locked))
            return conversation.failure();
        if (locked)
            return lockedResult;

        const HashPtr attributes = attributesFor(service, account);
        const QByteArray label = QByteArray(QUORLA_APP_NAME ": ") + account.toUtf8();
        const ValuePtr secret = secretValueFor(value);
        secret_service_store_sync(conversation.service(), quorlaSchema(), attributes.get(), collection.constData(),
                                  label.constData(), secret.get(), conversation.cancellable(),
                                  conversation.errorSlot());
        return conversation.failed() ? conversation.failure() : Result{};
    });
}

Result SecretServiceCredentialStore::copy(const QString &service, const QString &account, QByteArray *value)
{
    const auto read = [value](Conversation &, SecretItem *item) -> Result {
        const ValuePtr secret(secret_item_get_secret(item));
        if (!secret)
            return {Outcome::itemNotFound, 0};
        gsize length = 0;
        const gchar *bytes = secret_value_get(secret.get(), &length);
        *value = QByteArray(bytes, qsizetype(length));
        return {};
    };
    return converseAboutItem(service, account, SECRET_SEARCH_LOAD_SECRETS, read);
}

Result SecretServiceCredentialStore::exists(const QString &service, const QString &account)
{
    const auto found = [](Conversation &, SecretItem *) { return Result{}; };
    return converseAboutItem(service, account, SECRET_SEARCH_NONE, found);
}

Result SecretServiceCredentialStore::remove(const QString &service, const QString &account)
{
    return converse([&](Conversation &conversation) -> Result {
        ItemList found;
        if (!conversation.search(service, account, SECRET_SEARCH_ALL, &found))
            return conversation.failure();
        if (!found.items)
            return {Outcome::itemNotFound, 0};
        // Every copy goes, or a duplicate would bring the key back; a locked one would
        // need a prompt to delete.
        for (GList *node = found.items; node; node = node->next) {
            if (secret_item_get_locked(static_cast<SecretItem *>(node->data)))
                return lockedResult;
        }
        for (GList *node = found.items; node; node = node->next) {
            secret_item_delete_sync(static_cast<SecretItem *>(node->data), conversation.cancellable(),
                                    conversation.errorSlot());
            if (conversation.failed())
                return conversation.failure();
        }
        return {};
    });
}

Result SecretServiceCredentialStore::defaultCollection()
{
    return converse([](Conversation &conversation) -> Result {
        QByteArray collection;
        if (!conversation.defaultCollection(&collection))
            return conversation.failure();
        if (collection.isEmpty())
            return {Outcome::itemNotFound, SECRET_ERROR_NO_SUCH_OBJECT};
        bool locked = true;
        if (!conversation.isCollectionLocked(collection, &locked))
            return conversation.failure();
        return locked ? lockedResult : Result{};
    });
}
