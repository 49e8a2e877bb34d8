// Runs KeychainStore operations over the Secret Service and prints one answer per
// operation. Tests start it in a child process because libsecret keeps one connection
// per process to the bus it met first, and some tests need another bus.
//   quorla_keychain_probe OPERATION...   with OPERATION one of
//   save VALUE | load | contains | delete | pause (waits for a line on stdin)
// Answers: "ok", "ok <value>", "absent", "true"/"false", "paused" or "error <message>".
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
    QStringList arguments = app.arguments().mid(1);
    QTextStream out(stdout);
    QTextStream in(stdin);
    KeychainStore store(makeCredentialStore(), QStringLiteral(QUORLA_APP_ID), PlatformWords::linuxDesktop());
    const QString account = KeychainStore::apiKeyAccount();
    while (!arguments.isEmpty()) {
        const QString operation = arguments.takeFirst();
        try {
            if (operation == QLatin1String("save") && !arguments.isEmpty()) {
                store.saveString(arguments.takeFirst(), account);
                out << "ok";
            } else if (operation == QLatin1String("load")) {
                const auto value = store.loadString(account);
                out << (value ? QStringLiteral("ok ") + *value : QStringLiteral("absent"));
            } else if (operation == QLatin1String("contains")) {
                out << (store.contains(account) ? "true" : "false");
            } else if (operation == QLatin1String("delete")) {
                store.deleteItem(account);
                out << "ok";
            } else if (operation == QLatin1String("pause")) {
                out << "paused" << Qt::endl;
                (void)in.readLine();
                continue;
            } else {
                return 2;
            }
        } catch (const QuorlaError &error) {
            out << "error " << error.errorDescription(PlatformWords::linuxDesktop());
        }
        out << Qt::endl;
    }
    return 0;
}
