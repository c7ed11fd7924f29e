#pragma once

#include <QObject>
#include <QStringList>

class Session;

/// The CAN links of this computer that could become interfaces of the session.
class CanLinks : public QObject
{
    Q_OBJECT

public:
    /// @param session must outlive this object
    explicit CanLinks(Session *session, QObject *parent = nullptr);

    /// Names of the links that no interface of the session works on, in the order of the alphabet.
    QStringList unused() const;
    /// One interface for each of them. The first becomes primary where there is no other.
    void addInterfaces();

signals:
    /// Links came or went.
    void changed();
    /// In words for the user: a link that was plugged in or made.
    void remark(const QString &text);

private:
    void readDevices();

    Session *m_session;
    QStringList m_devices; ///< as the adapter layer names them
};
