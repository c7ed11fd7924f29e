#include "waiting.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

bool waitUntil(const std::function<bool()> &condition, int milliseconds)
{
    constexpr int lookMilliseconds = 10;
    if (condition())
        return true;
    QEventLoop loop;
    QElapsedTimer clock;
    QTimer look;
    bool holds = false;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        holds = condition();
        if (holds || clock.elapsed() >= milliseconds)
            loop.quit();
    });
    clock.start();
    look.start(lookMilliseconds);
    loop.exec();
    return holds;
}

void waitFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}
