#pragma once

#include "caninterfacewidget.h"
#include "fakefamily.h"

#include <QtTest>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStackedWidget>

#include <algorithm>

/// The form, with what only derived classes may call.
class OpenInterfaceForm : public CanInterfaceWidget
{
public:
    using CanInterfaceWidget::CanInterfaceWidget;
    using CanInterfaceWidget::disableFDCheckbox;
    using CanInterfaceWidget::enableAutoBusOnCheckBox;
    using CanInterfaceWidget::enableErrorFramesCheckBox;
    using CanInterfaceWidget::enableListenOnlyCheckBox;
    using CanInterfaceWidget::enableLowSpeedCheckBox;
    using CanInterfaceWidget::handleDeviceFeatures;
    using CanInterfaceWidget::setDeviceName;
    using CanInterfaceWidget::updateInterfaceList;
    using CanInterfaceWidget::updateLinkedAdapterList;
};

/// A form in a world with one fake family for each type number, called "Type 1" and so on, all of which have a page of
/// further settings, two bitrates of each kind, and two devices: "First" with all features but those of low speed only
/// and of auto bus on by default or force, and "Second" without any.
class InterfaceForm
{
public:
    using Adapter = AbstractCanAdapter;
    using Type = AbstractCanAdapter::CanAdapterType;

    static constexpr unsigned int highestType = Adapter::CanAdapterSystecXm3;
    static constexpr unsigned int mostFeatures = Adapter::FeatureListenOnly | Adapter::FeatureLowSpeedSelectable
        | Adapter::FeatureCanFd | Adapter::FeatureErrorFrames | Adapter::FeatureAutoBusOnChangeable;

    InterfaceForm()
    {
        installFamilies();
        m_form = std::make_unique<OpenInterfaceForm>();
    }

    OpenInterfaceForm *operator->() const { return m_form.get(); }
    OpenInterfaceForm &operator*() const { return *m_form; }

    static FakeFamily *family(unsigned int type) { return s_families.value(type); }

    template <class Control>
    Control *find(const char *name) const
    {
        auto *control = m_form->findChild<Control *>(QLatin1String(name));
        if (control == nullptr)
            qFatal("The form has no %s of that kind", name);
        return control;
    }
    QCheckBox *box(const char *name) const { return find<QCheckBox>(name); }
    QComboBox *list(const char *name) const { return find<QComboBox>(name); }
    QLineEdit *edit(const char *name) const { return find<QLineEdit>(name); }
    QLabel *label(const char *name) const { return find<QLabel>(name); }
    QSpinBox *spin(const char *name) const { return find<QSpinBox>(name); }
    QGroupBox *fdGroup() const { return find<QGroupBox>("cbCanfdConfig"); }
    QStackedWidget *pages() const { return find<QStackedWidget>("stackedWidget"); }
    QString page() const { return pages()->currentWidget()->objectName(); }
    /// Not hidden by itself; the form as a whole may be.
    bool isShown(const char *name) const { return !find<QWidget>(name)->isHidden(); }

    void selectType(unsigned int type) const
    {
        QComboBox *types = list("cbCanInterfaceType");
        types->setCurrentIndex(types->findData(type));
    }
    /// Even if it is selected already.
    void selectTypeAnew(unsigned int type) const
    {
        selectType(type);
        m_form->on_cbCanInterfaceType_currentIndexChanged(list("cbCanInterfaceType")->currentIndex());
    }
    void selectDevice(const QString &device) const { list("cbCanDevice")->setCurrentText(device); }

    QVariant value(Adapter::AdapterOption option) const { return m_form->getCanInterfaceOption(option); }
    void setValue(Adapter::AdapterOption option, const QVariant &value) const
    {
        m_form->setCanInterfaceOption(option, value);
    }

    static QStringList texts(const QComboBox *list)
    {
        QStringList all;
        for (int i = 0; i < list->count(); ++i)
            all.append(list->itemText(i));
        return all;
    }

    /// As the family of a type offers them.
    static QList<CAN::CANBitrateDesc> bitrates()
    {
        return {{QStringLiteral("125 kBit/s"), 125}, {QStringLiteral("250 kBit/s"), 250}};
    }
    static QList<CAN::CANBitrateDesc> dataBitrates()
    {
        return {{QStringLiteral("1000 kBit/s"), 1000, 0.75}, {QStringLiteral("2000 kBit/s"), 2000, 0.8}};
    }

private:
    static void installFamilies()
    {
        for (unsigned int type = 1; type <= highestType; ++type) {
            FakeFamily *family = FakeFamily::install(static_cast<Type>(type), QStringLiteral("Type %1").arg(type));
            family->additionalConfig = true;
            family->deviceMap = {{QStringLiteral("First"), mostFeatures}, {QStringLiteral("Second"), 0}};
            family->classicBitrates = bitrates();
            family->fdArbitrationBitrates = bitrates();
            family->fdDataBitrates = dataBitrates();
            s_families.insert(type, family);
        }
    }

    static inline QMap<unsigned int, FakeFamily *> s_families;

    std::unique_ptr<OpenInterfaceForm> m_form;
};
