#include "RestoreDefaults.h"

#include "AdapterValues.h"

namespace {

enum class Action { Set, Delete, DeleteUnlogged };
enum class Role { Either, First, Second };
enum class Kind { Either, Ethernet, Ipoib };

struct RestoreStep {
    LPCWSTR name;
    Action action;
    int number;
    int fromLevel;
    Role role;
    Kind kind;
};

const RestoreStep kRestore[] = {
    // clang-format off
    {value::kDefaultRecvRingProcessor,          Action::Set,            -1, 0, Role::Either, Kind::Either},
    {value::kTxInterruptProcessor,              Action::Set,            -1, 0, Role::Either, Kind::Either},
    {value::kTxForwardingProcessor,             Action::Set,            -1, 0, Role::Either, Kind::Either},
    {value::kReceiveBuffers,                    Action::Set,           512, 0, Role::Either, Kind::Either},
    {value::kForceDelayDropTimeoutMode,         Action::Set,             0, 0, Role::Either, Kind::Either},
    {value::kUseRssForRawIp,                    Action::Delete,          0, 0, Role::Either, Kind::Either},
    {value::kUseRssForUdp,                      Action::Delete,          0, 0, Role::Either, Kind::Either},
    {value::kMaxNumTxPacketsToIndicateComplete, Action::Delete,          0, 0, Role::Either, Kind::Either},
    {value::kUseSendFwQueue,                    Action::Delete,          0, 0, Role::Either, Kind::Either},
    {value::kRxIntModerationProfile,            Action::Set,             1, 0, Role::First,  Kind::Either},
    {value::kTxIntModerationProfile,            Action::Set,             1, 0, Role::First,  Kind::Either},
    {value::kSendCompletionMethod,              Action::Set,             0, 0, Role::Either, Kind::Ipoib},
    {value::kSendCompletionMethod,              Action::Delete,          0, 0, Role::Either, Kind::Ethernet},
    {value::kRecvCompletionMethod,              Action::Set,             1, 0, Role::Either, Kind::Either},
    {value::kTuningScenario,                    Action::Delete,          0, 0, Role::First,  Kind::Either},
    {value::kTuningScenario,                    Action::DeleteUnlogged,  0, 0, Role::Second, Kind::Either},
    {value::kMaxRssProcessors,                  Action::Set,             8, 1, Role::Either, Kind::Either},
    {value::kRssBaseProcNumber,                 Action::Set,             0, 1, Role::Either, Kind::Either},
    {value::kNumRssQueues,                      Action::Set,             8, 2, Role::Either, Kind::Either},
    {value::kRssMaxProcNumber,                  Action::Set,            63, 2, Role::Either, Kind::Either},
    {value::kRssProfile,                        Action::Set,             1, 2, Role::Either, Kind::Either},
    {value::kSingleStream,                      Action::Set,             0, 0, Role::Either, Kind::Ethernet},
    // clang-format on
};

void RestoreAdapter(LogStream* log, const TuningAdapter& adapter, Role role, int level) {
    const Kind kind = adapter.isEthernet ? Kind::Ethernet : Kind::Ipoib;
    for (const RestoreStep& step : kRestore) {
        if (step.fromLevel > level) continue;
        if (step.role != Role::Either && step.role != role) continue;
        if (step.kind != Kind::Either && step.kind != kind) continue;
        switch (step.action) {
            case Action::Set:
                SetAdapterKey(log, adapter, step.name, step.number);
                break;
            case Action::Delete:
                DeleteAdapterKey(log, adapter, step.name);
                break;
            case Action::DeleteUnlogged:
                DeleteAdapterKey(nullptr, adapter, step.name);
                break;
        }
    }
}

}  // namespace

void RestoreTuningDefaults(LogStream* log, const TuningAdapter* first,
                           const TuningAdapter* second) {
    const int level = GetOsTuningLevel();
    LogLine(log, TEXT("Restore Tuning Defaults\n"));
    if (first) RestoreAdapter(log, *first, Role::First, level);
    if (second) RestoreAdapter(log, *second, Role::Second, level);
}
