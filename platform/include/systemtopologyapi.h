#pragma once
// Processors, their groups and their NUMA nodes.

#include <minwindef.h>
#include <winnt.h>

DWORD WINAPI GetActiveProcessorCount(WORD group);
WORD WINAPI GetActiveProcessorGroupCount();
BOOL WINAPI GetNumaHighestNodeNumber(PULONG highest);
BOOL WINAPI GetNumaProcessorNodeEx(PPROCESSOR_NUMBER processor, PUSHORT node);
