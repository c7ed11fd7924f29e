#include "guihelper.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDockWidget>
#include <QGroupBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSettings>
#include <QSpinBox>
#include <QToolBar>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>

namespace {
// Object names lose their slashes before they become keys, so no widget can have one of these.
const QLatin1String geometryKey("window/geometry");
const QLatin1String stateKey("window/state");
const QLatin1String indexKey("/index");

/// The settings that the caller brought, or else the application's own.
class Store
{
public:
    explicit Store(QSettings *settings)
        : m_settings(settings)
    {
        if (m_settings == nullptr)
            m_settings = &m_own.emplace();
    }

    QSettings *operator->() const { return m_settings; }
    QSettings &operator*() const { return *m_settings; }

private:
    std::optional<QSettings> m_own;
    QSettings *m_settings;
};

QString joined(std::initializer_list<QString> parts)
{
    QStringList list;
    for (const QString &part : parts) {
        if (!part.isEmpty())
            list.append(part);
    }
    return list.join(QLatin1Char('/'));
}

// ---- Values. Files give back numbers and truth values as text, and anybody may have edited them: what is not surely
// a value of the wanted kind is none.

std::optional<QString> asText(const QVariant &stored)
{
    return stored.type() == QVariant::String ? std::optional(stored.toString()) : std::nullopt;
}

std::optional<int> asInt(const QVariant &stored)
{
    switch (stored.type()) {
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
    case QVariant::String: {
        bool ok = false;
        const qlonglong value = stored.toLongLong(&ok);
        ok = ok && value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
        return ok ? std::optional(static_cast<int>(value)) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<double> asDouble(const QVariant &stored)
{
    if (stored.type() != QVariant::Double && stored.type() != QVariant::String)
        return std::nullopt;
    bool ok = false;
    const double value = stored.toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<bool> asBool(const QVariant &stored)
{
    if (stored.type() == QVariant::Bool)
        return stored.toBool();
    const QString text = stored.type() == QVariant::String ? stored.toString() : QString();
    if (text == QLatin1String("true"))
        return true;
    return text == QLatin1String("false") ? std::optional(false) : std::nullopt;
}

std::optional<QByteArray> asBytes(const QVariant &stored)
{
    return stored.type() == QVariant::ByteArray ? std::optional(stored.toByteArray()) : std::nullopt;
}

template <typename T>
bool isWithin(const T &value, const T &lowest, const T &highest)
{
    return !(value < lowest) && !(highest < value);
}

// ---- One pair of functions a kind of widget. Reading back leaves the widget as it is where the stored value is none
// that the widget could have had.

void save(QSettings &settings, const QString &key, const QLineEdit &edit)
{
    settings.setValue(key, edit.text());
}

void restore(const QSettings &settings, const QString &key, QLineEdit &edit)
{
    if (const auto text = asText(settings.value(key)))
        edit.setText(*text);
}

void save(QSettings &settings, const QString &key, const QPlainTextEdit &edit)
{
    settings.setValue(key, edit.toPlainText());
}

void restore(const QSettings &settings, const QString &key, QPlainTextEdit &edit)
{
    if (const auto text = asText(settings.value(key)))
        edit.setPlainText(*text);
}

void save(QSettings &settings, const QString &key, const QSpinBox &box)
{
    settings.setValue(key, box.value());
}

void restore(const QSettings &settings, const QString &key, QSpinBox &box)
{
    const auto value = asInt(settings.value(key));
    if (value && isWithin(*value, box.minimum(), box.maximum()))
        box.setValue(*value);
}

void save(QSettings &settings, const QString &key, const QDoubleSpinBox &box)
{
    settings.setValue(key, box.value());
}

void restore(const QSettings &settings, const QString &key, QDoubleSpinBox &box)
{
    const auto value = asDouble(settings.value(key));
    if (value && isWithin(*value, box.minimum(), box.maximum()))
        box.setValue(*value);
}

// The text says what was chosen; the index only tells items of the same text apart. So a list that changed in the
// meantime, as one of devices does, shows what was saved or stays as it is, but never shows something else.
void save(QSettings &settings, const QString &key, const QComboBox &box)
{
    settings.setValue(key, box.currentText());
    settings.setValue(key + indexKey, box.currentIndex());
}

void restore(const QSettings &settings, const QString &key, QComboBox &box)
{
    const auto text = asText(settings.value(key));
    if (!text)
        return;
    const int stored = asInt(settings.value(key + indexKey)).value_or(-1);
    int index = stored >= 0 && stored < box.count() && box.itemText(stored) == *text ? stored : -1;
    if (index < 0 && !text->isEmpty())
        index = box.findText(*text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    const bool showsNothing = text->isEmpty() && (stored < 0 || box.isEditable());
    if (index >= 0 || showsNothing)
        box.setCurrentIndex(index);
    else if (box.isEditable())
        box.setEditText(*text);
}

void save(QSettings &settings, const QString &key, const QTimeEdit &edit)
{
    settings.setValue(key, edit.time().toString(Qt::ISODateWithMs));
}

void restore(const QSettings &settings, const QString &key, QTimeEdit &edit)
{
    const QTime time = QTime::fromString(asText(settings.value(key)).value_or(QString()), Qt::ISODateWithMs);
    if (time.isValid() && isWithin(time, edit.minimumTime(), edit.maximumTime()))
        edit.setTime(time);
}

void save(QSettings &settings, const QString &key, const QDateEdit &edit)
{
    settings.setValue(key, edit.date().toString(Qt::ISODate));
}

void restore(const QSettings &settings, const QString &key, QDateEdit &edit)
{
    const QDate date = QDate::fromString(asText(settings.value(key)).value_or(QString()), Qt::ISODate);
    if (date.isValid() && isWithin(date, edit.minimumDate(), edit.maximumDate()))
        edit.setDate(date);
}

void save(QSettings &settings, const QString &key, const QDateTimeEdit &edit)
{
    settings.setValue(key, edit.dateTime().toString(Qt::ISODateWithMs));
}

void restore(const QSettings &settings, const QString &key, QDateTimeEdit &edit)
{
    const QString text = asText(settings.value(key)).value_or(QString());
    const QDateTime dateTime = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (dateTime.isValid() && isWithin(dateTime, edit.minimumDateTime(), edit.maximumDateTime()))
        edit.setDateTime(dateTime);
}

void save(QSettings &settings, const QString &key, const QCheckBox &box)
{
    settings.setValue(key, int(box.checkState()));
}

void restore(const QSettings &settings, const QString &key, QCheckBox &box)
{
    const auto state = asInt(settings.value(key));
    const bool isKnown = state && isWithin<int>(*state, Qt::Unchecked, Qt::Checked);
    if (isKnown && (*state != Qt::PartiallyChecked || box.isTristate()))
        box.setCheckState(static_cast<Qt::CheckState>(*state));
}

void save(QSettings &settings, const QString &key, const QGroupBox &box)
{
    if (box.isCheckable())
        settings.setValue(key, box.isChecked());
}

void restore(const QSettings &settings, const QString &key, QGroupBox &box)
{
    const auto checked = asBool(settings.value(key));
    if (box.isCheckable() && checked)
        box.setChecked(*checked);
}

struct WidgetKind
{
    bool (*matches)(const QWidget *);
    void (*save)(QSettings &, const QString &key, const QWidget *);
    void (*restore)(const QSettings &, const QString &key, QWidget *);
};

template <typename Widget>
constexpr WidgetKind kindOf()
{
    return {
        [](const QWidget *widget) { return qobject_cast<const Widget *>(widget) != nullptr; },
        [](QSettings &settings, const QString &key, const QWidget *widget) {
            save(settings, key, *static_cast<const Widget *>(widget));
        },
        [](const QSettings &settings, const QString &key, QWidget *widget) {
            restore(settings, key, *static_cast<Widget *>(widget));
        },
    };
}

// The first that matches counts: a derived kind stands before the one that it derives from.
constexpr WidgetKind kinds[] = {
    kindOf<QLineEdit>(), kindOf<QPlainTextEdit>(), kindOf<QSpinBox>(),  kindOf<QDoubleSpinBox>(),
    kindOf<QComboBox>(), kindOf<QTimeEdit>(),      kindOf<QDateEdit>(), kindOf<QDateTimeEdit>(),
    kindOf<QCheckBox>(), kindOf<QGroupBox>(),
};

// ---- Which widgets.

struct Exceptions
{
    QStringList names;

    explicit Exceptions(const QString &list)
        : names(list.split(QLatin1Char(',')))
    {
        for (QString &name : names)
            name = name.trimmed();
        names.removeAll(QString());
    }

    bool contain(const QWidget *widget) const
    {
        return widget->property("ExcludeSaving").toBool() || names.contains(widget->objectName());
    }
};

/// Dialogs that belong to the window stand on their own; what merely floats above it does not.
bool isInsideOf(const QWidget *window, const QWidget *widget)
{
    for (; widget != window && widget != nullptr; widget = widget->parentWidget()) {
        const bool mayFloat = qobject_cast<const QDockWidget *>(widget) != nullptr
            || qobject_cast<const QToolBar *>(widget) != nullptr;
        if (widget->isWindow() && !mayFloat)
            return false;
    }
    return widget == window;
}

/// The line edit in a spin box and its like show what belongs to the box.
bool isPartOfAnother(const QWidget *widget)
{
    return widget->objectName().startsWith(QLatin1String("qt_"))
        || qobject_cast<const QComboBox *>(widget->parentWidget()) != nullptr
        || qobject_cast<const QAbstractSpinBox *>(widget->parentWidget()) != nullptr;
}

QString keyOf(const QString &group, const QWidget *widget)
{
    QString name = widget->objectName();
    name.replace(QLatin1Char('%'), QLatin1String("%25")).replace(QLatin1Char('/'), QLatin1String("%2F"));
    return joined({group, name});
}

void forEachKept(QWidget *window, const Exceptions &exceptions,
                 const std::function<void(const WidgetKind &, QWidget *)> &visit)
{
    const auto found = window->findChildren<QWidget *>();
    // Slots on a widget that gets its value may delete others.
    const QList<QPointer<QWidget>> widgets(found.begin(), found.end());
    for (const QPointer<QWidget> &widget : widgets) {
        if (!widget || widget->objectName().isEmpty() || isPartOfAnother(widget) || !isInsideOf(window, widget)
            || exceptions.contain(widget)) {
            continue;
        }
        const auto kind = std::find_if(std::begin(kinds), std::end(kinds),
                                       [&](const WidgetKind &known) { return known.matches(widget); });
        if (kind != std::end(kinds))
            visit(*kind, widget);
    }
}
} // namespace

int GuiHelper::showMessageBox(QWidget *parent, QString title, QString text, QString informativeText,
                              QFlags<QMessageBox::StandardButton> buttons, QMessageBox::Icon icon)
{
    // The parent may die while the box is up, and take the box with it.
    const QPointer<QMessageBox> box = new QMessageBox(icon, title, text, buttons, parent);
    box->setInformativeText(informativeText);
    const int button = box->exec();
    delete box;
    return button;
}

void GuiHelper::saveSettings(QWidget *window, QString group, QString exceptions, QSettings *settings)
{
    if (window == nullptr)
        return;
    const Store store(settings);
    const Exceptions left(exceptions);
    if (!left.contain(window)) {
        store->setValue(joined({group, geometryKey}), window->saveGeometry());
        if (const auto *mainWindow = qobject_cast<QMainWindow *>(window))
            store->setValue(joined({group, stateKey}), mainWindow->saveState());
    }
    forEachKept(window, left,
                [&](const WidgetKind &kind, QWidget *widget) { kind.save(*store, keyOf(group, widget), widget); });
}

void GuiHelper::restoreSettings(QWidget *window, QString group, QString exceptions, QSettings *settings)
{
    if (window == nullptr)
        return;
    const Store store(settings);
    const Exceptions left(exceptions);
    if (!left.contain(window)) {
        if (const auto geometry = asBytes(store->value(joined({group, geometryKey}))))
            window->restoreGeometry(*geometry);
        const auto state = asBytes(store->value(joined({group, stateKey})));
        auto *mainWindow = qobject_cast<QMainWindow *>(window);
        if (mainWindow != nullptr && state)
            mainWindow->restoreState(*state);
    }
    forEachKept(window, left,
                [&](const WidgetKind &kind, QWidget *widget) { kind.restore(*store, keyOf(group, widget), widget); });
}

void GuiHelper::saveSetting(QString group, QString key, QVariant value, QString subgroup, QSettings *settings)
{
    if (!key.isEmpty())
        Store(settings)->setValue(joined({group, subgroup, key}), value);
}

QVariant GuiHelper::restoreSetting(QString group, QString key, QString subgroup, QSettings *settings)
{
    return key.isEmpty() ? QVariant() : Store(settings)->value(joined({group, subgroup, key}));
}
