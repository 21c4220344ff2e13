#pragma once
// On which processors a thread may run.

#include <minwindef.h>
#include <winnt.h>

BOOL WINAPI SetThreadGroupAffinity(HANDLE thread, const GROUP_AFFINITY* affinity,
                                   PGROUP_AFFINITY previous);
