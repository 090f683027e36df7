#include "IProxy/OVIKPlatformInterface.h"

#include <cstddef>

QMutex IImageTransferProcess::m_transferIdMutex;
QMutex IImageTransferProcess::m_ProcessMutex;
int IImageTransferProcess::m_incrementalTransferId = 0;

QMutex IJobProcess::m_jobIdMutex;
QMutex IJobProcess::m_ProcessMutex;
int IJobProcess::m_incrementalJobId = 0;

namespace
{

template <std::size_t Size>
QByteArray wholeField(const quint8 (&field)[Size])
{
    return QByteArray(reinterpret_cast<const char*>(field), static_cast<int>(Size));
}

} // namespace

QByteArray ISystemInfo::serialNo() { return wholeField(m_systemInfo.serialNo); }

QByteArray ISystemInfo::moduleName() { return wholeField(m_systemInfo.moduleName); }

QByteArray ISystemInfo::manufactureCode() { return wholeField(m_systemInfo.manufactureCode); }

QByteArray IPartitionInfo::version()
{
    const bootldrInfo partition = info();
    return wholeField(partition.version);
}

int IBuzzer::on(int) { return -1; }

int IBuzzer::off() { return -1; }

QByteArray IHWPlugin::signatureName() const
{
    const sSEEModule module = signature();
    return wholeField(module.Name);
}

QByteArray IHWPlugin::signatureFunctArea() const
{
    const sSEEModule module = signature();
    return wholeField(module.FunctArea);
}
