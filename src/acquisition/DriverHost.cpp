#include "DriverHost.h"

#include "runtime/VbError.h"

namespace corvalog {

DriverHost::DriverHost(ProviderFactory factory, PacketPump &pump)
    : m_factory(std::move(factory))
    , m_pump(pump)
{
}

DriverHost::~DriverHost()
{
    release();
}

void DriverHost::release()
{
    m_pump.attach(nullptr);
    m_driver.reset();
}

void DriverHost::create()
{
    m_driver = m_factory();
    m_pump.attach(m_driver.get());
}

DataProvider &driverOf(DriverHost &host)
{
    if (!host.driver())
        throw VbError(vberr::ObjectVariableNotSet);
    return *host.driver();
}

} // namespace corvalog
