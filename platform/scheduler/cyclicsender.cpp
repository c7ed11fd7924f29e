#include "cyclicsender.h"

#include "adaptercontract.h"

#include <QLoggingCategory>

#include <chrono>
#include <system_error>

#include <pthread.h>
#include <sys/prctl.h>

Q_LOGGING_CATEGORY(lcScheduler, "kestrune.scheduler")

namespace {
using Clock = std::chrono::steady_clock;

qint64 nowInMicroseconds()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

Clock::time_point timePoint(qint64 microseconds)
{
    return Clock::time_point(std::chrono::microseconds(microseconds));
}

void nameAndTuneThread()
{
    pthread_setname_np(pthread_self(), "CanScheduler");
    // The kernel lets a timer fire up to 50 microseconds late to save wake-ups; here punctuality is the purpose.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
}
} // namespace

void CyclicSender::finish()
{
    {
        const std::lock_guard lock(m_mutex);
        m_adapter = nullptr;
        m_finishing = true;
    }
    m_wake.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

void CyclicSender::setLifeline(const QMetaObject::Connection &lifeline)
{
    const std::lock_guard lock(m_mutex);
    m_lifeline = lifeline;
}

void CyclicSender::use(AbstractCanAdapter *adapter)
{
    {
        const std::lock_guard lock(m_mutex);
        // Asked under the lock: an adapter that stops right now comes to drop() behind this.
        if (m_adapter == adapter || !adapter->getRunning())
            return;
        m_adapter = adapter;
        m_deadlines.restart(nowInMicroseconds());
    }
    m_wake.notify_one();
}

void CyclicSender::drop()
{
    Lock lock(m_mutex);
    m_adapter = nullptr;
    waitForWriter(lock, [this] { return m_writing == 0; });
}

quint32 CyclicSender::add(const CAN::CanMessage &message, qint64 period)
{
    quint32 handle = 0;
    {
        const std::lock_guard lock(m_mutex);
        do {
            ++m_lastHandle;
        } while (m_lastHandle == 0 || m_messages.count(m_lastHandle) != 0);
        handle = m_lastHandle;
        m_messages.insert({handle, message});
        m_deadlines.start(handle, period, nowInMicroseconds());
        startThread();
    }
    m_wake.notify_one();
    return handle;
}

bool CyclicSender::change(quint32 handle, const CAN::CanMessage &message, qint64 period)
{
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_messages.find(handle);
        if (found == m_messages.end())
            return false;
        found->second = message;
        m_deadlines.changePeriod(handle, period, nowInMicroseconds());
    }
    m_wake.notify_one();
    return true;
}

bool CyclicSender::remove(quint32 handle)
{
    Lock lock(m_mutex);
    if (m_messages.erase(handle) == 0)
        return false;
    m_deadlines.remove(handle);
    waitForWriter(lock, [this, handle] { return m_writing != handle; });
    return true;
}

void CyclicSender::removeAll()
{
    Lock lock(m_mutex);
    m_messages.clear();
    m_deadlines.clear();
    waitForWriter(lock, [this] { return m_writing == 0; });
}

int CyclicSender::count() const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_messages.size());
}

void CyclicSender::startThread()
{
    if (m_thread.joinable() || m_finishing)
        return;
    try {
        m_thread = std::thread(&CyclicSender::run, this);
    } catch (const std::system_error &error) {
        // The next frame that is added tries again.
        qCWarning(lcScheduler) << "No thread for cyclic frames:" << error.what();
    }
}

void CyclicSender::run()
{
    nameAndTuneThread();
    Lock lock(m_mutex);
    while (!m_finishing) {
        if (m_adapter == nullptr || m_messages.empty()) {
            m_wake.wait(lock);
            continue;
        }
        const qint64 now = nowInMicroseconds();
        if (m_deadlines.next() > now)
            m_wake.wait_until(lock, timePoint(m_deadlines.next()));
        else
            writeDue(lock, now);
    }
}

void CyclicSender::writeDue(Lock &lock, qint64 now)
{
    if (!m_lifeline) {
        m_adapter = nullptr;
        return;
    }
    AbstractCanAdapter *const adapter = m_adapter;
    m_writing = m_deadlines.take(now);
    CAN::CanMessage message = m_messages.at(m_writing);
    lock.unlock();
    // Its answer does not matter: the adapter counts what it loses.
    if (adapter->getRunning())
        adapter->write(&message);
    lock.lock();
    m_writing = 0;
    m_writeDone.notify_all();
}

template <typename Condition>
void CyclicSender::waitForWriter(Lock &lock, Condition condition)
{
    // An adapter that finds within write() that it stops would otherwise wait for itself.
    if (!isOwnThread())
        m_writeDone.wait(lock, condition);
}

bool CyclicSender::isOwnThread() const
{
    return m_thread.get_id() == std::this_thread::get_id();
}
