#include "datachunkhandler.h"

#include "storagefailuretext.h"

class DatachunkHandlerPrivate
{
public:
    explicit DatachunkHandlerPrivate(const TraceStore::Limits &limits)
        : store(limits)
    {
    }

    TraceStore store;
};

DatachunkHandler::DatachunkHandler(QObject *parent, unsigned int framesInMemory)
    : QObject(parent)
{
    TraceStore::Limits limits;
    limits.framesInMemory = framesInMemory;
    d = std::make_unique<DatachunkHandlerPrivate>(limits);
}

DatachunkHandler::~DatachunkHandler() = default;

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
    d->store.clear();
}

void DatachunkHandler::appendCanMessage(CAN::CanRxMessage message)
{
    const std::optional<TraceStore::Failure> failure = d->store.append(message);
    if (failure)
        emit storageFailed(storageFailureText(*failure));
}
