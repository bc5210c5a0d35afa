// Another program of the desktop, as far as its clipboard goes:
//   permora-test-clipboard get FORMAT        writes what is there to standard output; fails when nothing is
//   permora-test-clipboard put FORMAT TEXT   offers the text until another program does, and says "offered"
//   first
//   permora-test-clipboard hold              takes the clipboard, says "offered", and never answers anybody
#include <unistd.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

int Get(const QString& format) {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (data == nullptr || !data->hasFormat(format)) return EXIT_FAILURE;
    const QByteArray bytes = data->data(format);
    return std::fwrite(bytes.data(), 1, static_cast<std::size_t>(bytes.size()), stdout) ==
                   static_cast<std::size_t>(bytes.size())
               ? EXIT_SUCCESS
               : EXIT_FAILURE;
}

int Put(const QString& format, const char* text) {
    QClipboard& clipboard = *QGuiApplication::clipboard();
    auto* data = new QMimeData;
    data->setData(format, text);
    clipboard.setMimeData(data);
    QObject::connect(&clipboard, &QClipboard::dataChanged, &clipboard, [&clipboard] {
        if (!clipboard.ownsClipboard()) QGuiApplication::quit();
    });
    QTimer::singleShot(0, [] {
        std::puts("offered");
        std::fflush(stdout);
    });
    return QGuiApplication::exec();
}

// A program that hangs.
[[noreturn]] void Hold() {
    QGuiApplication::clipboard()->setText(QStringLiteral("never given"));
    std::puts("offered");
    std::fflush(stdout);
    for (;;)
        pause();
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const std::string_view command = argc > 2 ? argv[1] : "";
    if (command == "get" && argc == 3) return Get(QString::fromUtf8(argv[2]));
    if (command == "put" && argc == 4) return Put(QString::fromUtf8(argv[2]), argv[3]);
    if (argc == 2 && std::string_view(argv[1]) == "hold") Hold();
    std::fprintf(stderr, "usage: permora-test-clipboard get FORMAT | put FORMAT TEXT | hold\n");
    return EXIT_FAILURE;
}
