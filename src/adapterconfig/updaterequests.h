#pragma once

#include <utility>

/// When the form's requests for an update are answered.
///
/// The form asks as soon as it notices a change, which may be while it is only half filled from an adapter that was just
/// selected: an answer at that moment would save a mixture of two adapters. It may also be while the user is asked what
/// to do with edits, when the row that is selected is no longer the one that the form shows. So whoever fills the form
/// or asks holds the requests back, and answers once afterwards, or drops what came.
class UpdateRequests
{
public:
    /// Holds requests back while it lives. May be nested.
    class Hold
    {
    public:
        explicit Hold(UpdateRequests &requests)
            : m_requests(requests)
        {
            ++m_requests.m_holds;
        }
        ~Hold() { --m_requests.m_holds; }

    private:
        Hold(const Hold &) = delete;
        Hold &operator=(const Hold &) = delete;

        UpdateRequests &m_requests;
    };

    /// A request came. True if it is to be answered at once; otherwise it is kept, however many come.
    bool comeIn()
    {
        m_kept = m_holds > 0;
        return !m_kept;
    }

    /// Gives up what was kept. True if there is something to answer: not while anybody still holds requests back.
    bool takeKept() { return m_holds == 0 && std::exchange(m_kept, false); }

    void dropKept() { m_kept = false; }

private:
    int m_holds = 0;
    bool m_kept = false;
};
