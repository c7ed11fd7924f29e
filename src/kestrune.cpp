#include "kestrune.h"

const QString Kestrune::version = QStringLiteral("0.9");

Kestrune::Kestrune() = default;
