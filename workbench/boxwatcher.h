#pragma once

#include <QObject>
#include <QStringList>

/// Answers message boxes where nobody sits in front of the screen: notes what each says and closes it.
class BoxWatcher : public QObject
{
    Q_OBJECT

public:
    /// Watches the application until it goes.
    explicit BoxWatcher(QObject *parent = nullptr);

    /// What the boxes said so far.
    const QStringList &texts() const { return m_texts; }

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    QStringList m_texts;
};
