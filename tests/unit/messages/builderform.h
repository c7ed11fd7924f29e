#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>

/// A user at one of the two message builders, whose pages have the same controls.
class BuilderForm
{
public:
    BuilderForm(QDialog &dialog, const char *buildButton)
        : m_dialog(dialog)
        , m_buildButton(buildButton)
    {
    }

    bool show()
    {
        m_dialog.show();
        return QTest::qWaitForWindowExposed(&m_dialog);
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = m_dialog.findChild<Widget *>(QString::fromLatin1(name));
        if (!widget)
            qFatal("the form has no %s", name);
        return widget;
    }

    void click(const char *button) { QTest::mouseClick(find<QAbstractButton>(button), Qt::LeftButton); }

    void goTo(const QString &page)
    {
        auto *bar = find<QTabWidget>("tabWidget")->findChild<QTabBar *>();
        for (int i = 0; i < bar->count(); ++i) {
            if (bar->tabText(i) == page)
                QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(i).center());
        }
    }

    void setNumber(const char *spinBox, int value) { find<QSpinBox>(spinBox)->setValue(value); }

    void choose(const char *box, const QString &text)
    {
        if (find<QComboBox>(box)->findText(text) < 0)
            qFatal("%s has no such entry", box);
        find<QComboBox>(box)->setCurrentText(text);
    }

    void type(const char *edit, const QString &text)
    {
        find<QLineEdit>(edit)->clear();
        QTest::keyClicks(find<QLineEdit>(edit), text);
    }

    void build() { click(m_buildButton); }

    QStringList items(const char *box) const
    {
        QStringList texts;
        for (int i = 0; i < find<QComboBox>(box)->count(); ++i)
            texts += find<QComboBox>(box)->itemText(i);
        return texts;
    }

    /// The text that stands beside the field; empty if there is none.
    QString labelOf(const char *field) const
    {
        const auto *widget = find<QWidget>(field);
        for (const QLabel *label : m_dialog.findChildren<QLabel *>()) {
            if (label->buddy() == widget)
                return label->text();
        }
        return {};
    }

    QStringList pages() const
    {
        QStringList texts;
        const auto *tabs = find<QTabWidget>("tabWidget");
        for (int i = 0; i < tabs->count(); ++i)
            texts += tabs->widget(i)->objectName() + QLatin1Char(' ') + tabs->tabText(i);
        return texts;
    }

private:
    QDialog &m_dialog;
    const char *m_buildButton;
};

/// The rows in which the pages of both builders are alike.
inline void addRangesOfThePages()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("least");
    QTest::addColumn<int>("most");
    for (const char *name : {"spinBox_nmtNodeId", "spinBox_sdoNodeId", "spinBox_hbNodeId", "spinBox_emcyNodeId"})
        QTest::newRow(name) << name << 1 << 127;
    QTest::newRow("spinBox_pdoCobId") << "spinBox_pdoCobId" << 385 << 1407;
}

inline void addChoicesOfThePages()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("texts");
    const auto row = [](const char *name, const char *texts) {
        QTest::newRow(name) << name << QString::fromLatin1(texts).split(QLatin1Char('|'));
    };
    row("comboBox_nmtCmd", "Enter Preop|Start Node|Stop Node|Reset Comm|Reset Node");
    row("comboBox_sdoType", "Request|Response");
    row("comboBox_hbState", "Bootup|Stopped|Operational|Pre-Operational");
}

inline void addLabelsOfThePages()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("label");
    static constexpr struct
    {
        const char *field;
        const char *label;
    } labels[] = {
        {"spinBox_nmtNodeId", "Node ID"},  {"comboBox_nmtCmd", "NMT Command"},
        {"spinBox_pdoCobId", "COB - Id"},  {"spinBox_pdoLength", "Length"},
        {"spinBox_sdoNodeId", "Node ID"},  {"edt_sdoIndex", "Index"},
        {"edt_sdoSub", "Subindex"},        {"comboBox_sdoType", "Type"},
        {"spinBox_hbNodeId", "Node ID"},   {"comboBox_hbState", "Device state"},
        {"spinBox_emcyNodeId", "Node ID"}, {"comboBox_emcyCode", "Device error code"},
    };
    for (const auto &entry : labels)
        QTest::newRow(entry.field) << entry.field << entry.label;
}

inline const QMap<int, QString> &emergencyTexts()
{
    static const QMap<int, QString> texts = {
        {0x00, QStringLiteral("Error reset or no error")},
        {0x10, QStringLiteral("Generic error")},
        {0x20, QStringLiteral("Current")},
        {0x21, QStringLiteral("Current, CANopen device input side")},
        {0x22, QStringLiteral("Current inside the CANopen device")},
        {0x23, QStringLiteral("Current, CANopen device output side")},
        {0x30, QStringLiteral("Voltage")},
        {0x31, QStringLiteral("Mains voltage")},
        {0x32, QStringLiteral("Voltage inside the CANopen device")},
        {0x33, QStringLiteral("Output voltage")},
        {0x40, QStringLiteral("Temperature")},
        {0x41, QStringLiteral("Ambient temperature")},
        {0x42, QStringLiteral("CANopen device temperature")},
        {0x50, QStringLiteral("CANopen device hardware")},
        {0x60, QStringLiteral("CANopen device software")},
        {0x61, QStringLiteral("Internal software")},
        {0x62, QStringLiteral("User software")},
        {0x63, QStringLiteral("Data set")},
        {0x70, QStringLiteral("Additional modules")},
        {0x80, QStringLiteral("Monitoring")},
        {0x81, QStringLiteral("Communication")},
        {0x82, QStringLiteral("Protocol error")},
        {0x90, QStringLiteral("External error")},
        {0xF0, QStringLiteral("Additional functions")},
        {0xFF, QStringLiteral("CANopen device specific")},
    };
    return texts;
}

inline QMap<int, QString> entriesByKey(const QComboBox &box)
{
    QMap<int, QString> entries;
    for (int i = 0; i < box.count(); ++i)
        entries.insert(box.itemData(i).toInt(), box.itemText(i));
    return entries;
}
