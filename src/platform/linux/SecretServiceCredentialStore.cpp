// GIO has a struct member named "signals": libsecret comes before any Qt header.
#include <libsecret/secret.h>

#include "SecretServiceCredentialStore.h"

#include "AppInfo.h"

#include <QAbstractEventDispatcher>
#include <QLoggingCategory>
#include <QTimer>
#include <chrono>
#include <coroutine>
#include <memory>

using Outcome = CredentialStore::Outcome;
using Result = CredentialStore::Result;

Q_LOGGING_CATEGORY(lcSecretService, "quorla.secretservice")

namespace {

// Keyring calls answer in milliseconds; a service that takes longer is stuck or
// waiting for a dialog we must not wait for.
constexpr auto callLimit = std::chrono::seconds(5);
constexpr int callLimitMs = int(std::chrono::milliseconds(callLimit).count());
constexpr auto contentType = "text/plain";
// How often GLib's main context is turned by hand when Qt's dispatcher does not run it.
constexpr auto glibPumpInterval = std::chrono::milliseconds(5);

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T *pointer) const
    {
        release(pointer);
    }
};
using ServicePtr = std::unique_ptr<SecretService, Releaser<&g_object_unref>>;
using CollectionPtr = std::unique_ptr<SecretCollection, Releaser<&g_object_unref>>;
using AnswerPtr = std::unique_ptr<GAsyncResult, Releaser<&g_object_unref>>;
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

bool glibRunsOnTheEventLoop()
{
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher && dispatcher->inherits("QEventDispatcherGlib");
}

// Suspends the awaiting coroutine until one GIO call answers. GIO answers on the main
// context of the thread that made the call, never from inside the call; on the main
// thread Qt's GLib event dispatcher runs that context. A Qt built or started without
// GLib (QT_NO_GLIB) gets a timer that turns it by hand while the call is out.
template <typename Start>
class GioAnswer
{
public:
    explicit GioAnswer(Start start)
        : m_start(std::move(start))
    {
    }
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter)
    {
        m_waiter = waiter;
        if (!glibRunsOnTheEventLoop()) {
            m_pump = std::make_unique<QTimer>();
            QObject::connect(m_pump.get(), &QTimer::timeout, [] {
                while (g_main_context_iteration(nullptr, FALSE)) {
                }
            });
            m_pump->start(glibPumpInterval);
        }
        m_start(&GioAnswer::arrived, this);
    }
    AnswerPtr await_resume()
    {
        m_pump.reset();
        return std::move(m_answer);
    }

private:
    static void arrived(GObject *, GAsyncResult *answer, gpointer self)
    {
        auto *call = static_cast<GioAnswer *>(self);
        call->m_answer.reset(G_ASYNC_RESULT(g_object_ref(answer)));
        call->m_waiter.resume();
    }

    Start m_start;
    std::coroutine_handle<> m_waiter;
    AnswerPtr m_answer;
    std::unique_ptr<QTimer> m_pump;
};

// Cancels the calls of one operation when they outlive callLimit; a cancelled prompt
// is dismissed rather than left on screen. An unlock has no limit: it waits for the
// user. (GDBus's own limit of 25 s still applies to a bus that accepts the connection
// but never says hello.)
class Deadline
{
public:
    explicit Deadline(bool limited)
        : m_cancellable(g_cancellable_new())
    {
        if (!limited)
            return;
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, [cancellable = m_cancellable] { g_cancellable_cancel(cancellable); });
        m_timer.start(callLimit);
    }
    Deadline(const Deadline &) = delete;
    Deadline &operator=(const Deadline &) = delete;
    ~Deadline() { g_object_unref(m_cancellable); }

    [[nodiscard]] GCancellable *cancellable() const { return m_cancellable; }

private:
    GCancellable *m_cancellable;
    QTimer m_timer;
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
    explicit Conversation(bool limited)
        : m_deadline(limited)
    {
    }
    Conversation(const Conversation &) = delete;
    Conversation &operator=(const Conversation &) = delete;
    ~Conversation() { g_clear_error(&m_error); }

    QCoro::Task<bool> open()
    {
        const AnswerPtr answer = co_await GioAnswer([this](GAsyncReadyCallback done, gpointer call) {
            secret_service_get(SECRET_SERVICE_NONE, cancellable(), done, call);
        });
        m_service.reset(secret_service_get_finish(answer.get(), errorSlot()));
        co_return isOpen();
    }

    [[nodiscard]] bool isOpen() const { return m_service != nullptr; }
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
    QCoro::Task<bool> search(const QString &service, const QString &account, SecretSearchFlags flags, ItemList *found)
    {
        const HashPtr attributes = attributesFor(service, account);
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            secret_service_search(m_service.get(), quorlaSchema(), attributes.get(), flags, cancellable(), done, call);
        });
        found->items = secret_service_search_finish(m_service.get(), answer.get(), errorSlot());
        co_return !failed();
    }

    // The object path of the default collection, empty when there is none.
    QCoro::Task<bool> defaultCollection(QByteArray *path)
    {
        const VariantPtr reply = co_await callService("/org/freedesktop/secrets", "org.freedesktop.Secret.Service",
                                                      "ReadAlias", g_variant_new("(s)", SECRET_COLLECTION_DEFAULT), "(o)");
        if (!reply)
            co_return false;
        const gchar *objectPath = nullptr;
        g_variant_get(reply.get(), "(&o)", &objectPath);
        *path = qstrcmp(objectPath, "/") == 0 ? QByteArray() : QByteArray(objectPath);
        co_return true;
    }

    QCoro::Task<bool> isCollectionLocked(QByteArray path, bool *locked)
    {
        const VariantPtr reply =
            co_await callService(path.constData(), "org.freedesktop.DBus.Properties", "Get",
                                 g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Locked"), "(v)");
        if (!reply)
            co_return false;
        GVariant *value = nullptr;
        g_variant_get(reply.get(), "(v)", &value);
        const VariantPtr owned(value);
        *locked = !g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) || g_variant_get_boolean(value);
        co_return true;
    }

    QCoro::Task<> setSecret(SecretItem *item, SecretValue *value)
    {
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            secret_item_set_secret(item, value, cancellable(), done, call);
        });
        secret_item_set_secret_finish(item, answer.get(), errorSlot());
    }

    QCoro::Task<> store(GHashTable *attributes, QByteArray collection, QByteArray label, SecretValue *value)
    {
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            secret_service_store(m_service.get(), quorlaSchema(), attributes, collection.constData(), label.constData(),
                                 value, cancellable(), done, call);
        });
        secret_service_store_finish(m_service.get(), answer.get(), errorSlot());
    }

    QCoro::Task<> deleteItem(SecretItem *item)
    {
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            secret_item_delete(item, cancellable(), done, call);
        });
        secret_item_delete_finish(item, answer.get(), errorSlot());
    }

    // The default collection as an object, null when there is none.
    QCoro::Task<CollectionPtr> defaultCollectionObject()
    {
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            secret_collection_for_alias(m_service.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE,
                                        cancellable(), done, call);
        });
        co_return CollectionPtr(secret_collection_for_alias_finish(answer.get(), errorSlot()));
    }

    // Unlocks the objects, with the service's prompt if it wants one; whether any is open now.
    QCoro::Task<bool> unlock(GList *objects)
    {
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            secret_service_unlock(m_service.get(), objects, cancellable(), done, call);
        });
        GList *unlocked = nullptr;
        secret_service_unlock_finish(m_service.get(), answer.get(), &unlocked, errorSlot());
        const bool any = unlocked != nullptr;
        g_list_free_full(unlocked, g_object_unref);
        co_return any;
    }

private:
    // A call whose reply GDBus has checked against replyType (null on failure).
    QCoro::Task<VariantPtr> callService(const char *path, const char *interface, const char *method,
                                        GVariant *parameters, const char *replyType)
    {
        GDBusProxy *proxy = G_DBUS_PROXY(m_service.get());
        GDBusConnection *connection = g_dbus_proxy_get_connection(proxy);
        const AnswerPtr answer = co_await GioAnswer([&](GAsyncReadyCallback done, gpointer call) {
            g_dbus_connection_call(connection, g_dbus_proxy_get_name(proxy), path, interface, method, parameters,
                                   G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, callLimitMs, cancellable(),
                                   done, call);
        });
        co_return VariantPtr(g_dbus_connection_call_finish(connection, answer.get(), errorSlot()));
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
QCoro::Task<Result> converse(Operation operation, bool limited = true)
{
    for (int attempt = 0;; ++attempt) {
        Conversation conversation(limited);
        const bool open = co_await conversation.open();
        Result result = conversation.failure();
        if (open)
            result = co_await operation(conversation);
        if (result.outcome != Outcome::serviceUnavailable || !open || attempt > 0)
            co_return result;
        secret_service_disconnect();
    }
}

// Runs use on the first matching item, when there is one and it is unlocked.
template <typename Use>
QCoro::Task<Result> converseAboutItem(QString service, QString account, SecretSearchFlags flags, Use use)
{
    const auto operation = [&](Conversation &conversation) -> QCoro::Task<Result> {
        ItemList found;
        if (!co_await conversation.search(service, account, flags, &found))
            co_return conversation.failure();
        SecretItem *item = firstItem(found);
        if (!item)
            co_return Result{Outcome::itemNotFound, 0};
        if (secret_item_get_locked(item))
            co_return lockedResult;
        co_return co_await use(conversation, item);
    };
    co_return co_await converse(operation);
}

// The default collection's path when it is there and open; a Result saying why not otherwise.
QCoro::Task<Result> openDefaultCollection(Conversation &conversation, QByteArray *collection)
{
    if (!co_await conversation.defaultCollection(collection))
        co_return conversation.failure();
    if (collection->isEmpty())
        co_return Result{Outcome::itemNotFound, SECRET_ERROR_NO_SUCH_OBJECT};
    bool locked = true;
    if (!co_await conversation.isCollectionLocked(*collection, &locked))
        co_return conversation.failure();
    co_return locked ? lockedResult : Result{};
}

} // namespace

QCoro::Task<Result> SecretServiceCredentialStore::update(QString service, QString account, QByteArray value)
{
    const auto write = [&value](Conversation &conversation, SecretItem *item) -> QCoro::Task<Result> {
        const ValuePtr secret = secretValueFor(value);
        co_await conversation.setSecret(item, secret.get());
        co_return conversation.failed() ? conversation.failure() : Result{};
    };
    co_return co_await converseAboutItem(service, account, SECRET_SEARCH_NONE, write);
}

QCoro::Task<Result> SecretServiceCredentialStore::add(QString service, QString account, QByteArray value)
{
    const auto operation = [&](Conversation &conversation) -> QCoro::Task<Result> {
        // Storing into a missing or locked collection would ask the user to create or
        // unlock one: check first and fail instead.
        QByteArray collection;
        Result open = co_await openDefaultCollection(conversation, &collection);
        if (open.outcome == Outcome::itemNotFound)
            open.outcome = Outcome::failure;
        if (open.outcome != Outcome::success)
            co_return open;
        const HashPtr attributes = attributesFor(service, account);
        const QByteArray label = QByteArray(QUORLA_APP_NAME ": ") + account.toUtf8();
        const ValuePtr secret = secretValueFor(value);
        co_await conversation.store(attributes.get(), collection, label, secret.get());
        co_return conversation.failed() ? conversation.failure() : Result{};
    };
    co_return co_await converse(operation);
}

QCoro::Task<Result> SecretServiceCredentialStore::copy(QString service, QString account)
{
    const auto read = [](Conversation &, SecretItem *item) -> QCoro::Task<Result> {
        const ValuePtr secret(secret_item_get_secret(item));
        if (!secret)
            co_return Result{Outcome::itemNotFound, 0};
        gsize length = 0;
        const gchar *bytes = secret_value_get(secret.get(), &length);
        co_return Result{Outcome::success, 0, QByteArray(bytes, qsizetype(length))};
    };
    co_return co_await converseAboutItem(service, account, SECRET_SEARCH_LOAD_SECRETS, read);
}

QCoro::Task<Result> SecretServiceCredentialStore::exists(QString service, QString account)
{
    const auto found = [](Conversation &, SecretItem *) -> QCoro::Task<Result> { co_return Result{}; };
    co_return co_await converseAboutItem(service, account, SECRET_SEARCH_NONE, found);
}

QCoro::Task<Result> SecretServiceCredentialStore::remove(QString service, QString account)
{
    const auto operation = [&](Conversation &conversation) -> QCoro::Task<Result> {
        ItemList found;
        if (!co_await conversation.search(service, account, SECRET_SEARCH_ALL, &found))
            co_return conversation.failure();
        if (!found.items)
            co_return Result{Outcome::itemNotFound, 0};
        // Every copy goes, or a duplicate would bring the key back; a locked one would
        // need a prompt to delete.
        for (GList *node = found.items; node; node = node->next) {
            if (secret_item_get_locked(static_cast<SecretItem *>(node->data)))
                co_return lockedResult;
        }
        for (GList *node = found.items; node; node = node->next) {
            co_await conversation.deleteItem(static_cast<SecretItem *>(node->data));
            if (conversation.failed())
                co_return conversation.failure();
        }
        co_return Result{};
    };
    co_return co_await converse(operation);
}

QCoro::Task<Result> SecretServiceCredentialStore::defaultCollection()
{
    const auto operation = [](Conversation &conversation) -> QCoro::Task<Result> {
        QByteArray collection;
        co_return co_await openDefaultCollection(conversation, &collection);
    };
    co_return co_await converse(operation);
}

QCoro::Task<Result> SecretServiceCredentialStore::unlock(QString service, QString account)
{
    const auto operation = [&](Conversation &conversation) -> QCoro::Task<Result> {
        ItemList found;
        if (!co_await conversation.search(service, account, SECRET_SEARCH_ALL, &found))
            co_return conversation.failure();
        // What holds the key, or where a new key would go.
        CollectionPtr collection;
        if (!found.items) {
            collection = co_await conversation.defaultCollectionObject();
            if (conversation.failed())
                co_return conversation.failure();
            if (!collection)
                co_return Result{Outcome::itemNotFound, SECRET_ERROR_NO_SUCH_OBJECT};
        }
        GList defaultOnly{collection.get(), nullptr, nullptr};
        const bool unlocked = co_await conversation.unlock(found.items ? found.items : &defaultOnly);
        if (conversation.failed())
            co_return conversation.failure();
        co_return unlocked ? Result{} : lockedResult;
    };
    co_return co_await converse(operation, false);
}
