// Keeps one virtual keyboard on the Wayland seat until standard input closes. A headless
// compositor's seat has no keyboard otherwise: windows never become active and AT-SPI
// reports no focused field.
//
//   quorla_keyboard_keeper < FIFO

#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeySynthesizers.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const auto keyboard = VirtualKeyboardKeySynthesizer::create(WaylandConnection::open());
    if (!keyboard || !keyboard->attach()) {
        std::fprintf(stderr, "no virtual keyboard on $WAYLAND_DISPLAY\n");
        return 1;
    }
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[256];
        if (read(STDIN_FILENO, buffer, sizeof buffer) <= 0)
            app.quit();
    });
    std::printf("ready\n");
    std::fflush(stdout);
    return app.exec();
}
