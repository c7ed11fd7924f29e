#pragma once

#include "canmultiinterfacemodel.h"

#include <QStandardItemModel>
#include <QStyleOptionViewItem>

using AdapterFlags = CanMultiInterfaceModel::AdapterModelFlags;

/// The flags in the order of their boxes.
constexpr bool AdapterFlags::*flagMembers[] = {&AdapterFlags::canFd,     &AdapterFlags::listenOnly,
                                               &AdapterFlags::autoBusOn, &AdapterFlags::errorFrames,
                                               &AdapterFlags::lowSpeed,  &AdapterFlags::linked};

/// One cell that holds flags.
class FlagCell
{
public:
    explicit FlagCell(const AdapterFlags &flags = AdapterFlags())
        : m_model(1, 1)
    {
        m_model.setData(index(), QVariant::fromValue(flags), 257);
    }

    QModelIndex index() const { return m_model.index(0, 0); }
    QStandardItemModel *model() { return &m_model; }

private:
    QStandardItemModel m_model;
};

inline AdapterFlags onlyFlag(int box)
{
    AdapterFlags flags;
    flags.*flagMembers[box] = true;
    return flags;
}

inline AdapterFlags allFlags()
{
    AdapterFlags flags;
    for (bool AdapterFlags::*member : flagMembers)
        flags.*member = true;
    return flags;
}
