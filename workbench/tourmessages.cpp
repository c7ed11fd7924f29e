#include "toursteps.h"

#include "canmessagebuilder.h"
#include "canopen.h"
#include "canopenmessagebuilderdialog.h"
#include "canrawmessageeditordialog.h"
#include "demonodeprofiles.h"
#include "framecolumn.h"
#include "framemarks.h"
#include "frameprobe.h"
#include "frametext.h"
#include "frameview.h"
#include "mainwindow.h"
#include "messagetemplate.h"
#include "tourcontext.h"
#include "tracepage.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

namespace {
struct BuilderTab
{
    const char *name;
    const char *field; // a combo box of the tab, and what is chosen there
    const char *choice;
    const char *built;
};

constexpr BuilderTab tabs[] = {
    {"nmt", "comboBox_nmtCmd", "Start Node", "000, 2 bytes, 01 01"},
    {"pdo", nullptr, nullptr, "181, 0 bytes"},
    {"sdo", "comboBox_sdoType", "Request", "581, 8 bytes, 00 00 00 00"},
    {"heartbeat", "comboBox_hbState", "Operational", "701, 1 byte, 05"},
    {"emcy", "comboBox_emcyCode", "Generic error", "000, 8 bytes, 10"},
};

QString builtText(const CANopenMessageBuilderDialog &dialog)
{
    CANRAW::CanRawCompareMessage message;
    const_cast<CANopenMessageBuilderDialog &>(dialog).getMessage(message);
    return MessageTemplate::text(message);
}

void choose(const QWidget &form, const char *field, const char *choice)
{
    form.findChild<QComboBox *>(QString::fromLatin1(field))->setCurrentText(QString::fromLatin1(choice));
}

void press(const QWidget &form, const char *button)
{
    form.findChild<QPushButton *>(QString::fromLatin1(button))->click();
}

void visitTabs(TourContext &tour, CANopenMessageBuilderDialog &dialog)
{
    auto *pages = dialog.findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    for (int page = 0; page < pages->count(); ++page) {
        const BuilderTab &tab = tabs[page];
        pages->setCurrentIndex(page);
        if (tab.field != nullptr)
            choose(dialog, tab.field, tab.choice);
        press(dialog, "btnBuild");
        tour.report().compare(TourContext::tr("Built on the tab \"%1\"").arg(pages->tabText(page)),
                              QString::fromLatin1(tab.built), builtText(dialog));
        tour.takePicture(&dialog, QStringLiteral("builder-%1").arg(QLatin1String(tab.name)),
                         TourContext::tr("the builder, tab \"%1\"").arg(pages->tabText(page)));
    }
    pages->setCurrentIndex(0);
}

/// The forms of the library that the workbench itself has no use for.
void showOtherForms(TourContext &tour)
{
    CanRawMessageEditorDialog editor(tour.window());
    editor.open();
    tour.takePicture(&editor, QStringLiteral("raw-editor"), TourContext::tr("the raw message editor"));
    tour.takeOtherLooks(&editor, QStringLiteral("raw-editor"), TourContext::tr("the raw message editor"));
    editor.reject();

    CanMessageBuilder builder(tour.window());
    builder.open();
    auto *pages = builder.findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentIndex(page);
        press(builder, "btn_build");
        tour.takePicture(&builder, QStringLiteral("trigger-builder-%1").arg(QLatin1String(tabs[page].name)),
                         TourContext::tr("the trigger builder, tab \"%1\"").arg(pages->tabText(page)));
    }
    tour.takeOtherLooks(&builder, QStringLiteral("trigger-builder"), TourContext::tr("the trigger builder"));
    builder.reject();
}
} // namespace

namespace TourSteps {

bool buildMessages(TourContext &tour)
{
    tour.trigger(QStringLiteral("actionBuildMessage"));
    auto *dialog = tour.window()->findChild<CANopenMessageBuilderDialog *>(QStringLiteral("dlgBuildMessage"));
    visitTabs(tour, *dialog);
    tour.takeOtherLooks(dialog, QStringLiteral("builder"), TourContext::tr("the builder"));

    press(*dialog, "btnBuild");
    dialog->accept();
    tour.second()->keep(CanOpen::cobNmt);
    tour.pressButton(QStringLiteral("btnSend"));
    TourContext::await([&] { return !tour.second()->kept(CanOpen::cobNmt).isEmpty(); });
    tour.report().compare(TourContext::tr("Built message, as it arrives"), QStringLiteral("01 01"),
                          FrameText::data(tour.second()->last(CanOpen::cobNmt)));
    showOtherForms(tour);
    return true;
}

bool markFrames(TourContext &tour)
{
    // The heartbeat and a PDO of the first node, whatever they carry.
    const quint8 node = demoNodeProfiles().front().nodeId;
    const quint32 identifiers[] = {CanOpen::cobHeartbeat + node, CanOpen::cobTpdo1 + node};
    for (const quint32 identifier : identifiers) {
        tour.trigger(QStringLiteral("actionMark"));
        auto *dialog = tour.window()->findChild<CANopenMessageBuilderDialog *>(QStringLiteral("dlgMarkFrames"));
        dialog->findChild<QLineEdit *>(QStringLiteral("edtCanId"))
            ->setText(QStringLiteral("0x%1").arg(identifier, 0, 16));
        if (identifier == identifiers[0])
            tour.takePicture(dialog, QStringLiteral("mark"), TourContext::tr("the template of a mark"));
        dialog->accept();
    }
    const QAbstractItemModel *model = tour.window()->identifierPage()->view()->model();
    int marked = 0;
    for (int row = 0; row < model->rowCount(); ++row)
        marked += model->index(row, 0).data(FrameRoles::MarkRole).toInt() >= 0 ? 1 : 0;
    tour.report().compare(TourContext::tr("Identifiers that are marked"), static_cast<quint64>(std::size(identifiers)),
                          static_cast<quint64>(marked));
    tour.takePicture(QStringLiteral("marks"), TourContext::tr("the trace with marks"));
    tour.takeOtherLooks(tour.window(), QStringLiteral("marks"), TourContext::tr("the trace with marks"));
    tour.trigger(QStringLiteral("actionClearMarks"));
    tour.report().compare(TourContext::tr("Marks after \"Remove all marks\""), 0,
                          static_cast<quint64>(tour.window()->marks()->count()));
    return true;
}

} // namespace TourSteps
