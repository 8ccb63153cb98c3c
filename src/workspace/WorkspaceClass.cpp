#include "WorkspaceClass.h"

#include "WorkspaceModule.h"
#include "runtime/VbError.h"

#include <tuple>

namespace corvalog {

WorkspaceClass::WorkspaceClass()
{
    SilentPrompts none; // loading no file asks nothing
    LoadWorkspace(*this, std::string(), none);
}

ItemClass &WorkspaceClass::item(int n)
{
    if (n < 1 || n > static_cast<int>(Items.size()))
        throw VbError(vberr::SubscriptOutOfRange);
    return Items[static_cast<std::size_t>(n - 1)];
}

const ItemClass &WorkspaceClass::item(int n) const
{
    return const_cast<WorkspaceClass *>(this)->item(n);
}

namespace {

auto savedItem(const ItemClass &i)
{
    return std::tie(i.DataTag, i.DataTagList, i.Caption, i.Format, i.TareValue, i.Timeout,
        i.Default, i.Underload, i.Overload, i.Functionality);
}

auto savedGeneral(const WorkspaceClass &w)
{
    return std::tie(w.Version, w.Title, w.Notes, w.Interface, w.Port, w.Baudrate, w.Channels,
        w.LogInterval, w.RFChannel, w.BSAddress, w.KeepAwake);
}

} // namespace

bool workspacesDiffer(const WorkspaceClass &a, const WorkspaceClass &b)
{
    if (savedGeneral(a) != savedGeneral(b) || a.Items.size() != b.Items.size())
        return true;
    for (std::size_t i = 0; i < a.Items.size(); ++i) {
        if (savedItem(a.Items[i]) != savedItem(b.Items[i]))
            return true;
    }
    return false;
}

ItemClass newChannel(int channel)
{
    ItemClass item;
    item.Caption = "Channel " + std::to_string(channel);
    item.Format = "00.000";
    item.Timeout = 3;
    item.Underload = -9999999.0f;
    item.Overload = 9999999.0f;
    item.Functionality = ChannelFunction::None;
    return item;
}

} // namespace corvalog
