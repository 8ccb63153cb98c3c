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
    m_creationFailure.clear();
    try {
        m_driver = m_factory();
    } catch (const VbError &e) {
        m_creationFailure = e.description();
        throw;
    }
    m_pump.attach(m_driver.get());
    if (m_driver)
        QObject::connect(m_driver.get(), &DataProvider::noticed, m_driver.get(),
            [this](const QString &text, bool problem) {
                if (m_noticeHandler)
                    m_noticeHandler(text.toStdString(), problem);
            });
}

DataProvider &driverOf(DriverHost &host)
{
    if (!host.driver()) {
        const VbError none(vberr::ObjectVariableNotSet);
        if (host.creationFailure().empty())
            throw none;
        throw VbError(none.number(),
            none.description() + " (no data provider: " + host.creationFailure() + ")");
    }
    return *host.driver();
}

} // namespace corvalog
