#include "sdoserver.h"

#include <algorithm>

namespace {
constexpr quint8 requestLength = 8;

// The upper three bits of the first byte, in a request.
enum ClientCommand : quint8 {
    DownloadSegment = 0,
    InitiateDownload = 1,
    InitiateUpload = 2,
    UploadSegment = 3,
    AbortTransfer = 4,
    BlockUpload = 5,
    BlockDownload = 6,
};

// The first byte of a response.
constexpr quint8 uploadResponse = 0x43; // expedited, size indicated, no byte of the four unused
constexpr quint8 downloadResponse = 0x60;
constexpr quint8 abortResponse = 0x80;

// The lower bits of the first byte of an initiate request.
constexpr quint8 expeditedBit = 0x02;
constexpr quint8 sizeIndicatedBit = 0x01;

/// What a request says, and the road for its response.
struct Request
{
    quint8 nodeId;
    quint8 head;
    quint16 index;
    quint8 subindex;
    quint32 data;

    ClientCommand command() const { return static_cast<ClientCommand>(head >> 5); }
    bool expedited() const { return (head & expeditedBit) != 0; }
    bool sizeIndicated() const { return (head & sizeIndicatedBit) != 0; }
    quint8 size() const { return 4 - (head >> 2 & 3); }

    CAN::CanMessage response(quint8 responseHead, quint32 responseData) const
    {
        CAN::CanMessage message;
        message.id = CanOpen::cobSdoResponse + nodeId;
        CanOpen::append<quint8>(message, responseHead);
        CanOpen::append<quint16>(message, index);
        CanOpen::append<quint8>(message, subindex);
        CanOpen::append<quint32>(message, responseData);
        return message;
    }

    CAN::CanMessage abort(CanOpen::SdoAbort code) const { return response(abortResponse, static_cast<quint32>(code)); }
};

/// The bits of a value that its size covers.
quint32 cut(quint32 value, quint8 size)
{
    return size >= 4 ? value : value & ((1U << (8 * size)) - 1);
}

CAN::CanMessage upload(const ObjectEntry &entry, const Request &request)
{
    const quint8 unused = 4 - entry.size;
    return request.response(static_cast<quint8>(uploadResponse | unused << 2), cut(entry.value, entry.size));
}

CAN::CanMessage download(ObjectEntry &entry, const Request &request)
{
    if (!entry.writable)
        return request.abort(CanOpen::SdoAbort::WriteOfReadOnly);
    if (!request.expedited())
        return request.abort(CanOpen::SdoAbort::CommandSpecifier);
    if (request.sizeIndicated() && request.size() != entry.size)
        return request.abort(CanOpen::SdoAbort::LengthMismatch);
    entry.value = cut(request.data, entry.size);
    return request.response(downloadResponse, 0);
}

CAN::CanMessage transfer(ObjectDictionary &objects, const Request &request)
{
    ObjectEntry *entry = findObject(objects, request.index, request.subindex);
    if (entry != nullptr)
        return request.command() == InitiateUpload ? upload(*entry, request) : download(*entry, request);
    const bool otherSubindex = std::any_of(objects.cbegin(), objects.cend(), [&request](const ObjectEntry &object) {
        return object.index == request.index;
    });
    return request.abort(otherSubindex ? CanOpen::SdoAbort::NoSuchSubindex : CanOpen::SdoAbort::NoSuchObject);
}
} // namespace

ObjectEntry *findObject(ObjectDictionary &objects, quint16 index, quint8 subindex)
{
    const auto found = std::find_if(objects.begin(), objects.end(), [index, subindex](const ObjectEntry &object) {
        return object.index == index && object.subindex == subindex;
    });
    return found == objects.end() ? nullptr : &*found;
}

std::optional<CAN::CanMessage> answerSdo(ObjectDictionary &objects, quint8 nodeId, const CAN::CanMessage &request)
{
    if (request.id != CanOpen::cobSdoRequest + nodeId || request.length != requestLength
        || !CanOpen::isClassicDataFrame(request))
        return std::nullopt;

    const Request parsed = {nodeId, request.data[0], qFromLittleEndian<quint16>(request.data + 1), request.data[3],
                            qFromLittleEndian<quint32>(request.data + 4)};
    switch (parsed.command()) {
    case InitiateDownload:
    case InitiateUpload:
        return transfer(objects, parsed);
    case AbortTransfer:
        return std::nullopt;
    case BlockUpload:
    case BlockDownload:
        return parsed.abort(CanOpen::SdoAbort::CommandSpecifier);
    case DownloadSegment:
    case UploadSegment:
        break;
    }
    // These requests carry data where the others name an object, so the abort names none.
    return Request{nodeId, parsed.head, 0, 0, 0}.abort(CanOpen::SdoAbort::CommandSpecifier);
}
