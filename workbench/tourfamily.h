#pragma once

#include "canadapterfamily.h"

/// Stands in for a family of hardware that the tour's computer does not have, so that the tour can show what the
/// interface form has for it. Its one device can do everything; its adapters cannot be opened.
class TourFamily : public CanAdapterFamily
{
public:
    TourFamily(AbstractCanAdapter::CanAdapterType type, const QString &name);

    AbstractCanAdapter::CanAdapterType type() const override { return m_type; }
    QString name() const override { return m_name; }
    AbstractCanAdapter *createAdapter(const QString &device) const override;
    QMap<QString, unsigned int> devices() const override;
    QList<CAN::CANBitrateDesc> bitrates(bool fd) const override;
    QList<CAN::CANBitrateDesc> fdBitrates() const override;
    bool hasAdditionalConfig() const override { return true; }
    bool hasClassicBitTiming() const override { return true; }
    bool hasFdBitTiming() const override { return true; }

private:
    AbstractCanAdapter::CanAdapterType m_type;
    QString m_name;
};
