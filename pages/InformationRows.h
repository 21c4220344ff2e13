#pragma once
// The fifteen facts about an adapter that the Information tab shows, and how they are read. Knows
// neither window nor page. Any thread.

#include <windows.h>
#include <array>

#include "UserFailure.h"

enum InformationRowIndex {
    ROW_DRIVER_VERSION,
    ROW_FIRMWARE_VERSION,
    ROW_PORT_NUMBER,
    ROW_BUS_TYPE,
    ROW_LINK_SPEED,
    ROW_PART_NUMBER,
    ROW_DEVICE_ID,
    ROW_REVISION_ID,
    ROW_CURRENT_MAC_ADDRESS,
    ROW_PERMANENT_MAC_ADDRESS,
    ROW_NETWORK_STATUS,
    ROW_FRIENDLY_NAME,
    ROW_IPV4_ADDRESS,
    ROW_USER_NAME,
    ROW_PKEY,
    INFORMATION_ROW_COUNT,
};

using InformationText = WCHAR[250];

// What follows a text's terminator is zero, so that equal rows are equal byte for byte.
struct InformationRow {
    InformationText label;
    InformationText value;
};
using InformationRows = std::array<InformationRow, INFORMATION_ROW_COUNT>;

// Shown for what isn't available.
inline constexpr WCHAR kNotAvailable[] = TEXT("     -     ");

// The adapter that the rows are about. Borrowed texts.
struct InformationSource {
    LPCWSTR classKeyPath;  // below HKEY_LOCAL_MACHINE
    LPCWSTR deviceName;  // its NetCfgInstanceId, under which its device object opens; may be empty
};

// Who has a refresh done.
class RefreshObserver {
  public:
    // Asked between two rows: true ends the refresh there.
    virtual bool StopRequested() = 0;
    // A failure that the user is due.
    virtual void Report(const UserFailure& failure) = 0;

  protected:
    ~RefreshObserver() = default;
};

// Reads all rows anew. A row whose source fails keeps the value that it comes with or becomes
// kNotAvailable, as the row has it. False when the observer ended it: some rows are the old ones.
bool RefreshRows(const InformationSource& source, RefreshObserver& observer, InformationRows& rows);
