#pragma once

#include <QVector>

/// A set of identifiers, kept as ranges: to accept all of them costs no more than to accept one.
class IdentifierSet
{
public:
    /// Both ends included. If `first` is the greater one, the range holds nothing.
    struct Range
    {
        quint32 first;
        quint32 last;
    };

    IdentifierSet() = default;
    /// @param ranges in any order, overlapping or not
    explicit IdentifierSet(QVector<Range> ranges);

    bool contains(quint32 id) const;
    bool isEmpty() const;
    /// Number of single identifiers.
    quint64 size() const;

private:
    QVector<Range> m_ranges; ///< ascending, with gaps between them
};

Q_DECLARE_TYPEINFO(IdentifierSet::Range, Q_PRIMITIVE_TYPE);
