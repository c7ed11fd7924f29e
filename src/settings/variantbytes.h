#pragma once

#include <QByteArray>
#include <QVariant>

/// The bytes of one QVariant, as QDataStream writes it in version 17 (Qt 5.6). A reader must set the same version.
QByteArray writeVariant(const QVariant &value);

/// The variant in `bytes`, or an invalid one where they hold none. Damaged bytes cost no more memory and no deeper a
/// stack than whole ones of their size.
QVariant readVariant(const QByteArray &bytes);
