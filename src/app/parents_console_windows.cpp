#include "app/parents_console.h"

#include <windows.h>

#include <cstdio>

namespace quorvel {

namespace {

bool leadsSomewhere(DWORD output)
{
    const auto handle = GetStdHandle(output);
    return handle != nullptr && handle != INVALID_HANDLE_VALUE && GetFileType(handle) != FILE_TYPE_UNKNOWN;
}

} // namespace

void useParentsConsole()
{
    const bool outputLeads = leadsSomewhere(STD_OUTPUT_HANDLE);
    const bool errorsLead = leadsSomewhere(STD_ERROR_HANDLE);
    if ((outputLeads && errorsLead) || AttachConsole(ATTACH_PARENT_PROCESS) == 0) return;
    if (!outputLeads) std::freopen("CONOUT$", "w", stdout);
    if (!errorsLead) std::freopen("CONOUT$", "w", stderr);
}

} // namespace quorvel
