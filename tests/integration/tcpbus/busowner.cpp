// A program with one demo adapter, as any other that uses the library: usually the first on its port, and so the one
// that carries the bus. Says "ready" when its adapter runs, prints the identifier of each frame it receives, and sends
// each frame back with the next identifier. Ends when its input does.
//
//     busowner PORT [quiet]
//
// With "quiet" it prints no identifiers.

#include "adaptercontract.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>

namespace {
void say(const QByteArray &line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const std::unique_ptr<AbstractCanAdapter> adapter(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QStringLiteral("Demo 1")));
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, application.arguments().value(1));
    const bool quiet = application.arguments().value(2) == QLatin1String("quiet");
    QObject::connect(
        adapter.get(), &AbstractCanAdapter::newCanMessage, adapter.get(),
        [&, quiet](CAN::CanRxMessage *received) {
            if (!quiet)
                say(QByteArray::number(received->message.id, 16));
            CAN::CanMessage answer = received->message;
            ++answer.id;
            adapter->write(&answer);
        },
        Qt::DirectConnection);
    if (adapter->open() != AbstractCanAdapter::OpenOk) {
        say(adapter->errorText().toUtf8());
        return 1;
    }
    adapter->setRunning(true);
    say("ready");
    while (std::getchar() != EOF) {
    }
    adapter->close();
    return 0;
}
