#pragma once

#include "adaptercontract.h"

#include <atomic>

/// An adapter over a link that has a receive thread of its own: how a connection begins and ends, and who may send,
/// whatever the link is.
///
/// The settings that sending needs are read in setRunning(true); changes show from the next of these on.
/// close() waits for the receive thread, hence for a slot that just runs on it. Called by such a slot itself, it takes
/// place later, on the adapter's thread.
///
/// A class that derives from this one ends the link in its own destructor, and says there that the adapter does not run.
class ThreadedAdapter : public AbstractCanAdapter
{
    Q_OBJECT

public:
    int open() final;
    void close() final;
    int getDeviceNumber() override;
    void setRunning(bool running) final;
    WriteResult write(CAN::CanMessage *message) final;

protected:
    /// Has the options that are the same for all such adapters, at their defaults; not the bitrates.
    ThreadedAdapter(CanAdapterType type, const QString &device, QObject *parent);

    // The link, on the adapter's thread unless said otherwise.

    /// Makes it, when there is none; counters and error text are fresh.
    /// @return an OpenResult
    virtual int openLink() = 0;
    /// Waits for the receive thread, after which that one calls nothing any more. Harmless without a link.
    virtual void endLink() = 0;
    virtual bool isLinked() const = 0;
    /// From any thread.
    virtual bool isReceiveThread() const = 0;
    virtual void readSendSettings();
    /// Sends a frame that these settings allow; from any thread.
    virtual WriteResult send(const CAN::CanMessage &message) = 0;

    /// The answer of an openLink() that failed.
    /// @param text what happened, and what to do, for the user
    int refuse(OpenResult result, const QString &text);
    int refuseForLackOfResources();
    /// For the receive thread, at the end of a link that nobody ended.
    void tellLoss(const QString &text);

    /// From any thread: frames are handed on.
    bool isRunning() const { return m_running; }
    /// From any thread.
    bool usesCanFd() const { return m_canFd; }

private slots:
    void noticeLoss();

private:
    bool isOpen() const { return isLinked() && !m_closesLater; }
    WriteResult sendIfAllowed(const CAN::CanMessage &message);

    std::atomic<bool> m_running{false};
    std::atomic<bool> m_closesLater{false}; ///< asked for on the receive thread, not done yet
    std::atomic<bool> m_canFd{false};
    std::atomic<bool> m_silent{false};
};
