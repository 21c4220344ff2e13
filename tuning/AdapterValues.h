#pragma once
// The values of an adapter's class key that tuning writes and the driver reads at its next start.
// All are REG_SZ and hold a decimal number. The sheet's thread.

#include <windows.h>

#include "AdapterContext.h"
#include "TuningLog.h"

namespace value {
inline constexpr WCHAR kTuningScenario[] = TEXT("TuningScenario");
inline constexpr WCHAR kDefaultRecvRingProcessor[] = TEXT("DefaultRecvRingProcessor");
inline constexpr WCHAR kTxInterruptProcessor[] = TEXT("TxInterruptProcessor");
inline constexpr WCHAR kTxForwardingProcessor[] = TEXT("TxForwardingProcessor");
inline constexpr WCHAR kReceiveBuffers[] = TEXT("*ReceiveBuffers");
inline constexpr WCHAR kForceDelayDropTimeoutMode[] = TEXT("ForceDelayDropTimeoutMode");
inline constexpr WCHAR kUseRssForRawIp[] = TEXT("UseRSSForRawIP");
inline constexpr WCHAR kUseRssForUdp[] = TEXT("UseRSSForUDP");
inline constexpr WCHAR kMaxNumTxPacketsToIndicateComplete[] =
    TEXT("MaxNumTxPacketsToIndicateComplete");
inline constexpr WCHAR kUseSendFwQueue[] = TEXT("UseSendFwQueue");
inline constexpr WCHAR kRxIntModerationProfile[] = TEXT("RxIntModerationProfile");
inline constexpr WCHAR kTxIntModerationProfile[] = TEXT("TxIntModerationProfile");
inline constexpr WCHAR kSendCompletionMethod[] = TEXT("SendCompletionMethod");
inline constexpr WCHAR kRecvCompletionMethod[] = TEXT("RecvCompletionMethod");
inline constexpr WCHAR kMaxRssProcessors[] = TEXT("*MaxRssProcessors");
inline constexpr WCHAR kRssBaseProcNumber[] = TEXT("*RssBaseProcNumber");
inline constexpr WCHAR kNumRssQueues[] = TEXT("*NumRSSQueues");
inline constexpr WCHAR kRssMaxProcNumber[] = TEXT("*RssMaxProcNumber");
inline constexpr WCHAR kRssProfile[] = TEXT("*RssProfile");
inline constexpr WCHAR kSingleStream[] = TEXT("SingleStream");
}  // namespace value

// Logs the change (with a log) and then writes the value. A failed write is not noticed, and its
// line is written all the same.
void SetAdapterKey(LogStream* log, const TuningAdapter& adapter, LPCWSTR name, int number);
// The same for a deletion; a value that isn't there is no failure.
void DeleteAdapterKey(LogStream* log, const TuningAdapter& adapter, LPCWSTR name);

// Which of the RSS values the running system's drivers know: 1 from 6.1 on, 2 from 6.2 on. From
// major 6 on only the minor version counts, so that 10.0 gives 0.
int GetOsTuningLevel();
