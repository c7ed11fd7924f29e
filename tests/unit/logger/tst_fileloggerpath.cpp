#include "loggerform.h"

#include <QFileDialog>
#include <QTimer>

class TestFileLoggerPath : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void existingFileIsAnnounced();
    void selectedFileIsTaken();
    void cancelledSelectionClearsThePath();

private:
    std::unique_ptr<LoggerForm> m_form;
};

namespace {
/// Answers the file dialog that comes up next, and notes what it says.
class FileDialogUser : public QObject
{
public:
    explicit FileDialogUser(std::function<void(QFileDialog &)> answer)
        : m_answer(std::move(answer))
    {
        connect(&m_timer, &QTimer::timeout, this, &FileDialogUser::look);
        m_timer.start(10);
    }

    QString caption;
    QStringList filters;
    QString folder;

private:
    void look()
    {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return;
        m_timer.stop();
        caption = dialog->windowTitle();
        filters = dialog->nameFilters();
        folder = dialog->directory().path();
        m_answer(*dialog);
    }

    std::function<void(QFileDialog &)> m_answer;
    QTimer m_timer;
};

QString rememberedPath()
{
    return QSettings(QStringLiteral("Kestrune"), QStringLiteral("Falcon"))
        .value(QStringLiteral("CANFileLoogger/filePath"), QStringLiteral("none"))
        .toString();
}
} // namespace

void TestFileLoggerPath::init()
{
    LoggerForm::forgetSettings();
    m_form = std::make_unique<LoggerForm>();
}

void TestFileLoggerPath::cleanup()
{
    m_form.reset();
}

void TestFileLoggerPath::existingFileIsAnnounced()
{
    const auto *bar = m_form->find<QStatusBar>("statusbar");
    QCOMPARE(bar->currentMessage(), QString());
    m_form->click("btnStart");
    m_form->click("btnStop");
    m_form->setPath({});
    m_form->setPath(m_form->path());
    QCOMPARE(bar->currentMessage(), QStringLiteral("File already exists and will be overwritten!"));
    m_form->setPath(m_form->path(QStringLiteral("other.txt")));
    QCOMPARE(bar->currentMessage(), QString());
}

void TestFileLoggerPath::selectedFileIsTaken()
{
    const QString chosen = m_form->path(QStringLiteral("chosen"));
    const FileDialogUser user([&chosen](QFileDialog &dialog) {
        dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(chosen);
        QTest::keyClick(&dialog, Qt::Key_Enter);
    });
    m_form->click("btnFileSelect");
    QCOMPARE(user.caption, QStringLiteral("Select file to log CAN messages"));
    QCOMPARE(user.filters, QStringList{QStringLiteral("Files (*.txt)")});
    QCOMPARE(user.folder, QFileInfo(m_form->path()).path());
    QCOMPARE(m_form->find<QLineEdit>("edtFilePath")->text(), chosen);
    QCOMPARE(rememberedPath(), chosen);
}

void TestFileLoggerPath::cancelledSelectionClearsThePath()
{
    const FileDialogUser user([](QFileDialog &dialog) { dialog.reject(); });
    m_form->click("btnFileSelect");
    QCOMPARE(m_form->find<QLineEdit>("edtFilePath")->text(), QString());
    QCOMPARE(rememberedPath(), QString());
}

QTEST_MAIN(TestFileLoggerPath)
#include "tst_fileloggerpath.moc"
