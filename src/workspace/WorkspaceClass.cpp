#include "WorkspaceClass.h"

#include "WorkspaceModule.h"
#include "runtime/VbError.h"

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

} // namespace corvalog
