#pragma once
// The umbrella header, as in the SDK. Each family has its own header of the SDK's name.

#include <winresrc.h>
#ifndef RC_INVOKED
#include <winerror.h>
#include <winnt.h>
#include <errhandlingapi.h>
#include <handleapi.h>
#include <fileapi.h>
#include <ioapiset.h>
#include <processenv.h>
#include <processthreadsapi.h>
#include <processtopologyapi.h>
#include <systemtopologyapi.h>
#include <synchapi.h>
#include <sysinfoapi.h>
#include <securitybaseapi.h>
#include <libloaderapi.h>
#include <stringapiset.h>
#include <winnls.h>
#include <winreg.h>
#include <winbase.h>
#include <wingdi.h>
#include <winuser.h>
#endif
