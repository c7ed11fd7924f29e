#pragma once

#include <QStringList>
#include <QtGlobal>

/// Collects the texts of the debug stream while it lives, in the place of whoever gets them otherwise.
class DebugLines
{
public:
    DebugLines()
        : m_before(qInstallMessageHandler(collect))
    {
        texts().clear();
    }
    ~DebugLines() { qInstallMessageHandler(m_before); }

    static QStringList &texts()
    {
        static QStringList all;
        return all;
    }

private:
    Q_DISABLE_COPY(DebugLines)

    static void collect(QtMsgType type, const QMessageLogContext &, const QString &text)
    {
        if (type == QtDebugMsg)
            texts().append(text);
    }

    QtMessageHandler m_before;
};
