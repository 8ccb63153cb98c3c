#pragma once

#include "DataProvider.h"
#include "PacketPump.h"

#include <functional>
#include <memory>
#include <string>

namespace corvalog {

// Makes a new driver object; raises VbError (number and description) when it cannot.
using ProviderFactory = std::function<std::unique_ptr<DataProvider>()>;

// The one driver object the program holds, and the pump its packets go through. Empty before
// the first InterfaceInit and after a failed creation.
class DriverHost
{
public:
    DriverHost(ProviderFactory factory, PacketPump &pump);
    ~DriverHost();

    DataProvider *driver() const { return m_driver.get(); }
    PacketPump &pump() { return m_pump; }

    // Releases the driver object (its packets still waiting for the GUI thread are dropped).
    void release();
    // Creates a new driver object and attaches it to the pump; raises what the factory raises.
    void create();
    // Why the last creation failed ("" when it did not), for the errors of calls on nothing.
    const std::string &creationFailure() const { return m_creationFailure; }
    // Who hears every driver's notices about its link (a lost and a recovered base station).
    using NoticeHandler = std::function<void(const std::string &text, bool problem)>;
    void setNoticeHandler(NoticeHandler handler) { m_noticeHandler = std::move(handler); }

private:
    ProviderFactory m_factory;
    PacketPump &m_pump;
    std::unique_ptr<DataProvider> m_driver;
    std::string m_creationFailure;
    NoticeHandler m_noticeHandler;
};

// A call on the driver object, or error 91 (Object variable not set) when there is none, as
// calling a method of nothing does; its description adds why there is none.
DataProvider &driverOf(DriverHost &host);

} // namespace corvalog
