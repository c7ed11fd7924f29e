#pragma once

#include "bitratelists.h"
#include "fakefamily.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

/// The bitrate lists with controls of their own, wired up as a form does, and a family whose answers a test sets.
class BitrateBench
{
public:
    static constexpr AbstractCanAdapter::CanAdapterType type = AbstractCanAdapter::CanAdapterKvaser;

    BitrateBench()
        : lists({&classic, &data, &editClassic, &editData, &lblBtr, &edtBtr})
    {
        const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
        QObject::connect(&classic, indexChanged, &classic, [this](int index) { lists.classicIndexChanged(index); });
        QObject::connect(&data, indexChanged, &data, [this](int index) { lists.dataIndexChanged(index); });
    }

    ~BitrateBench()
    {
        CanAdapterFactory::unregisterFamily(type);
        CanAdapterFactory::unregisterFamily(systec);
    }

    /// A family with the bitrates that most tests use and both kinds of hand-made timings.
    static FakeFamily *installFamily(AbstractCanAdapter::CanAdapterType familyType = type)
    {
        FakeFamily *family = FakeFamily::install(familyType);
        family->classicBitrates = {{QStringLiteral("50 kBit/s"), 50, 0.875},
                                   {QStringLiteral("125 kBit/s"), 125, 0.875},
                                   {QStringLiteral("250 kBit/s"), 250, 0.8},
                                   {QStringLiteral("250 kBit/s"), 250, 0.875},
                                   {QStringLiteral("500 kBit/s"), 500, 0.0}};
        family->fdDataBitrates = {{QStringLiteral("1000 kBit/s"), 1000, 0.75},
                                  {QStringLiteral("2000 kBit/s"), 2000, 0.8},
                                  {QStringLiteral("2000 kBit/s"), 2000, 0.75},
                                  {QStringLiteral("4000 kBit/s"), 4000, 0.0}};
        family->classicBitTiming = true;
        family->fdBitTiming = true;
        return family;
    }

    /// Texts of all entries, the selected one in brackets.
    static QString shown(const QComboBox &list)
    {
        QStringList texts;
        for (int i = 0; i < list.count(); ++i)
            texts += (i == list.currentIndex() ? QStringLiteral("[%1]") : QStringLiteral("%1")).arg(list.itemText(i));
        return texts.join(QStringLiteral(", "));
    }

    void choose(QComboBox &list, const QString &text)
    {
        const int index = list.findText(text);
        if (index < 0)
            qFatal("no %s in %s", qPrintable(text), qPrintable(shown(list)));
        list.setCurrentIndex(index);
    }

    static constexpr AbstractCanAdapter::CanAdapterType systec = AbstractCanAdapter::CanAdapterSystecUsb;

    QComboBox classic;
    QComboBox data;
    QPushButton editClassic;
    QPushButton editData;
    QLabel lblBtr;
    QLineEdit edtBtr;
    BitrateLists lists;
};
