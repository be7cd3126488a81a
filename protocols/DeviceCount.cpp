#include "protocols/DeviceCount.h"

#include <QByteArray>

#include <cstdlib>

int CountOf(const QByteArray& output)
{
    return static_cast<int>(std::strtol(output.constData(), nullptr, 10));
}

int SdCardsAmong(int mmcDevices)
{
    return mmcDevices > 0 ? mmcDevices - 1 : 0;
}
