#include "datachunkhandler.h"

#include "storagefailuretext.h"
#include "traceexport.h"
#include "tracefiletexts.h"
#include "traceimport.h"
#include "tracerecorder.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <new>
#include <utility>

class DatachunkHandlerPrivate
{
public:
    DatachunkHandlerPrivate(const TraceStore::Limits &limits, DatachunkHandler *handler)
        : store(limits)
        , recorder(store,
                   [handler](const TraceRecorder::Failure &failure) {
                       emit handler->recordingFailed(TraceFileTexts::recordingFailed(failure));
                   })
        , q(handler)
    {
    }

    /// What the caller is told of an import.
    struct ImportState
    {
        bool open = false;
        DatachunkHelper::ImportFileType type = DatachunkHelper::NoFile;
        QString error;
        QString remark;
    };

    bool beginLoad();
    bool load(const QString &fileName);
    bool import(QFile &file);
    bool refuse(const QString &error);
    ImportState importState() const;
    void clear();

    TraceStore store;
    TraceRecorder recorder;
    DatachunkHandler *const q;
    std::atomic<bool> cancelled = false;

    /// A load and a recording do not begin side by side.
    std::mutex beginMutex;
    std::atomic<bool> loading = false;

    mutable std::mutex stateMutex;
    ImportState state;
};

/// False if a load runs already.
bool DatachunkHandlerPrivate::beginLoad()
{
    const std::lock_guard begin(beginMutex);
    if (loading.exchange(true))
        return false;
    cancelled = false;
    const std::lock_guard lock(stateMutex);
    state = ImportState();
    state.open = true;
    return true;
}

bool DatachunkHandlerPrivate::load(const QString &fileName)
{
    if (recorder.isRunning())
        return refuse(TraceFileTexts::recordingRuns());
    const QFileInfo info(fileName);
    // Whoever opens a pipe may wait for ever.
    if (info.exists() && !info.isFile())
        return refuse(TraceFileTexts::noFile(fileName));
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return refuse(TraceFileTexts::cannotOpen(fileName, file.errorString()));
    try {
        return import(file);
    } catch (const std::bad_alloc &) {
        return refuse(TraceFileTexts::noMemory());
    }
}

bool DatachunkHandlerPrivate::import(QFile &file)
{
    TraceImport::Listener listener;
    listener.begins = [this] { store.clear(); };
    listener.progressed = [this](double percent) { emit q->sigQRMLoadingProgress(percent); };
    listener.storageFailed = [this](const TraceStore::Failure &failure) {
        emit q->storageFailed(storageFailureText(failure));
    };
    const TraceImport::Result result = TraceImport(store, cancelled, listener).run(file);
    const std::lock_guard lock(stateMutex);
    state.error = TraceFileTexts::importError(result, file.fileName());
    state.remark = TraceFileTexts::importRemark(result);
    return result.isGood();
}

bool DatachunkHandlerPrivate::refuse(const QString &error)
{
    const std::lock_guard lock(stateMutex);
    state.error = error;
    return false;
}

DatachunkHandlerPrivate::ImportState DatachunkHandlerPrivate::importState() const
{
    const std::lock_guard lock(stateMutex);
    return state;
}

void DatachunkHandlerPrivate::clear()
{
    recorder.clearStore();
    const std::lock_guard lock(stateMutex);
    state.type = DatachunkHelper::NoFile;
}

DatachunkHandler::DatachunkHandler(QObject *parent, unsigned int framesInMemory)
    : QObject(parent)
{
    TraceStore::Limits limits;
    limits.framesInMemory = framesInMemory;
    d = std::make_unique<DatachunkHandlerPrivate>(limits, this);
    // importFinished() may have to cross threads.
    qRegisterMetaType<DatachunkHelper::ImportFileType>();
}

DatachunkHandler::~DatachunkHandler()
{
    // While there is still somebody who can tell that it failed.
    d->recorder.stop();
}

void DatachunkHandler::addMessageNoteToNextMessage(QString note)
{
    d->store.addNoteToNext(note);
}

void DatachunkHandler::addMessageNoteToLastMessage(QString note)
{
    d->store.addNoteToLast(note);
}

QStringList DatachunkHandler::messageNotes(unsigned int index) const
{
    return d->store.notes(index);
}

unsigned int DatachunkHandler::getMessageCount() const
{
    return d->store.count();
}

CAN::CanRxMessage DatachunkHandler::getLastMessage() const
{
    return d->store.last().value_or(CAN::CanRxMessage());
}

bool DatachunkHandler::getMessageAtIndex(CAN::CanRxMessage &message, unsigned int index) const
{
    return d->store.read(message, index);
}

QVector<CAN::CanRxMessage> DatachunkHandler::getMessages(unsigned int first, unsigned int count) const
{
    return d->store.readRange(first, count);
}

quint64 DatachunkHandler::lostMessageCount() const
{
    return d->store.lost();
}

void DatachunkHandler::clear()
{
    d->clear();
}

bool DatachunkHandler::loadQrmFile(QString fileName)
{
    if (!d->beginLoad())
        return false;
    const bool loaded = d->load(fileName);
    d->loading = false;
    return loaded;
}

void DatachunkHandler::cancelImport()
{
    d->cancelled = true;
}

void DatachunkHandler::setImportFinished(bool success, DatachunkHelper::ImportFileType type, QString text, bool discard)
{
    if (discard)
        d->clear();
    QString told;
    {
        const std::lock_guard lock(d->stateMutex);
        DatachunkHandlerPrivate::ImportState &state = d->state;
        state.open = false;
        state.type = success && !discard ? type : DatachunkHelper::NoFile;
        QString &kept = success ? state.remark : state.error;
        if (!text.isEmpty())
            kept = text;
        told = kept;
    }
    emit importFinished(success, type, told);
}

bool DatachunkHandler::isImporting() const
{
    return d->importState().open;
}

DatachunkHelper::ImportFileType DatachunkHandler::importedFileType() const
{
    return d->importState().type;
}

QString DatachunkHandler::importError() const
{
    return d->importState().error;
}

QString DatachunkHandler::importRemark() const
{
    return d->importState().remark;
}

bool DatachunkHandler::saveQrmFile(QString fileName, QString *error) const
{
    QSaveFile file(fileName);
    // Qt forgets why its buffer could not be written.
    const bool opened = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    const TraceExport::Outcome outcome = opened ? TraceExport::run(d->store, file) : TraceExport::WriteFailed;
    if (outcome == TraceExport::Complete && file.commit())
        return true;
    if (error != nullptr)
        *error = outcome == TraceExport::TraceUnreadable ? TraceFileTexts::traceUnreadable(fileName)
                                                         : TraceFileTexts::cannotSave(fileName, file.errorString());
    return false;
}

bool DatachunkHandler::startRecording(QString fileName, QString *error)
{
    const std::lock_guard begin(d->beginMutex);
    const bool loading = d->loading;
    const int failure = loading ? 0 : d->recorder.start(fileName);
    if (!loading && failure == 0)
        return true;
    if (error != nullptr)
        *error = loading ? TraceFileTexts::loadRuns() : TraceFileTexts::cannotRecord(fileName, failure);
    return false;
}

void DatachunkHandler::stopRecording()
{
    d->recorder.stop();
}

bool DatachunkHandler::isRecording() const
{
    return d->recorder.isRunning();
}

void DatachunkHandler::appendCanMessage(CAN::CanRxMessage message)
{
    const std::optional<TraceStore::Failure> failure = d->store.append(message);
    if (failure)
        emit storageFailed(storageFailureText(*failure));
}
