// Runs one KeychainStore operation over the Secret Service and prints its answer.
// Tests start it in a child process because libsecret keeps one connection per
// process to the bus it met first, and some tests need another bus.
//   quorla_keychain_probe save VALUE | load | contains | delete
// Prints "ok", "ok <value>", "absent", "true"/"false", or "error <message>".
#include "AppInfo.h"
#include "models/QuorlaError.h"
#include "platform/PlatformBackends.h"
#include "stores/KeychainStore.h"
#include "support/PlatformWords.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    QTextStream out(stdout);
    if (arguments.isEmpty())
        return 2;
    KeychainStore store(makeCredentialStore(), QStringLiteral(QUORLA_APP_ID), PlatformWords::linuxDesktop());
    const QString account = KeychainStore::apiKeyAccount();
    try {
        const QString &operation = arguments.first();
        if (operation == QLatin1String("save") && arguments.size() == 2) {
            store.saveString(arguments.at(1), account);
            out << "ok\n";
        } else if (operation == QLatin1String("load")) {
            const auto value = store.loadString(account);
            out << (value ? QStringLiteral("ok ") + *value : QStringLiteral("absent")) << '\n';
        } else if (operation == QLatin1String("contains")) {
            out << (store.contains(account) ? "true" : "false") << '\n';
        } else if (operation == QLatin1String("delete")) {
            store.deleteItem(account);
            out << "ok\n";
        } else {
            return 2;
        }
    } catch (const QuorlaError &error) {
        out << "error " << error.errorDescription(PlatformWords::linuxDesktop()) << '\n';
    }
    return 0;
}
