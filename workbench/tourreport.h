#pragma once

#include <QString>
#include <QVector>

/// What a tour checked, as a table for people.
class TourReport
{
public:
    /// A check that passes if the two texts are equal.
    void compare(const QString &name, const QString &expected, const QString &seen);
    void compare(const QString &name, quint64 expected, quint64 seen);
    /// A check that somebody else has decided.
    void add(const QString &name, const QString &expected, const QString &seen, bool passed);

    bool allPassed() const;
    int failureCount() const;
    int count() const { return m_checks.size(); }

    /// One line for each check, in columns, and one that sums them up.
    QString table() const;

private:
    struct Check
    {
        QString name;
        QString expected;
        QString seen;
        bool passed;
    };

    QVector<Check> m_checks;
};
