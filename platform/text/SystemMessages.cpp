#include "SystemMessages.h"

#include <algorithm>
#include <iterator>

#include <winerror.h>

namespace platform {
namespace {

struct Message {
    DWORD code;
    const char* text;
};

// Ascending; codes that nobody names here stand for themselves.
constexpr Message messages[] = {
    {ERROR_SUCCESS, "The operation completed successfully."},
    {ERROR_INVALID_FUNCTION, "Incorrect function."},
    {ERROR_FILE_NOT_FOUND, "The system cannot find the file specified."},
    {ERROR_PATH_NOT_FOUND, "The system cannot find the path specified."},
    {ERROR_ACCESS_DENIED, "Access is denied."},
    {ERROR_INVALID_HANDLE, "The handle is invalid."},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough storage is available to process this command."},
    {ERROR_INVALID_DATA, "The data is invalid."},
    {ERROR_OUTOFMEMORY, "Not enough storage is available to complete this operation."},
    {ERROR_INVALID_DRIVE, "The system cannot find the drive specified."},
    {ERROR_NO_MORE_FILES, "There are no more files."},
    {19, "The media is write protected."},
    {ERROR_NOT_READY, "The device is not ready."},
    {29, "The system cannot write to the specified device."},
    {30, "The system cannot read from the specified device."},
    {ERROR_GEN_FAILURE, "A device attached to the system is not functioning."},
    {ERROR_SHARING_VIOLATION,
     "The process cannot access the file because it is being used by another process."},
    {33,
     "The process cannot access the file because another process has locked a portion of the "
     "file."},
    {ERROR_HANDLE_DISK_FULL, "The disk is full."},
    {ERROR_NOT_SUPPORTED, "The request is not supported."},
    {ERROR_FILE_EXISTS, "The file exists."},
    {ERROR_INVALID_PARAMETER, "The parameter is incorrect."},
    {ERROR_BUFFER_OVERFLOW, "The file name is too long."},
    {ERROR_DISK_FULL, "There is not enough space on the disk."},
    {ERROR_CALL_NOT_IMPLEMENTED, "This function is not supported on this system."},
    {ERROR_INSUFFICIENT_BUFFER, "The data area passed to a system call is too small."},
    {ERROR_INVALID_NAME, "The filename, directory name, or volume label syntax is incorrect."},
    {ERROR_MOD_NOT_FOUND, "The specified module could not be found."},
    {ERROR_PROC_NOT_FOUND, "The specified procedure could not be found."},
    {ERROR_NEGATIVE_SEEK,
     "An attempt was made to move the file pointer before the beginning of the file."},
    {ERROR_DIR_NOT_EMPTY, "The directory is not empty."},
    {ERROR_BAD_PATHNAME, "The specified path is invalid."},
    {ERROR_BUSY, "The requested resource is in use."},
    {ERROR_ALREADY_EXISTS, "Cannot create a file when that file already exists."},
    {ERROR_FILENAME_EXCED_RANGE, "The filename or extension is too long."},
    {ERROR_MORE_DATA, "More data is available."},
    {258, "The wait operation timed out."},
    {ERROR_NO_MORE_ITEMS, "No more data is available."},
    {ERROR_DIRECTORY, "The directory name is invalid."},
    {ERROR_NOT_OWNER, "Attempt to release mutex not owned by caller."},
    {ERROR_MR_MID_NOT_FOUND,
     "The system cannot find message text for message number 0x%1 in the message file for %2."},
    {ERROR_INVALID_ADDRESS, "Attempt to access invalid address."},
    {ERROR_ARITHMETIC_OVERFLOW, "Arithmetic result exceeded 32 bits."},
    {995,
     "The I/O operation has been aborted because of either a thread exit or an application "
     "request."},
    {ERROR_NOACCESS, "Invalid access to memory location."},
    {ERROR_INVALID_FLAGS, "Invalid flags."},
    {ERROR_BADDB, "The configuration registry database is corrupt."},
    {ERROR_BADKEY, "The configuration registry key is invalid."},
    {1011, "The configuration registry key could not be opened."},
    {1012, "The configuration registry key could not be read."},
    {1013, "The configuration registry key could not be written."},
    {1016,
     "An I/O operation initiated by the registry failed unrecoverably. The registry could not "
     "read in, or write out, or flush, one of the files that contain the system's image of the "
     "registry."},
    {ERROR_KEY_DELETED,
     "Illegal operation attempted on a registry key that has been marked for deletion."},
    {ERROR_KEY_HAS_CHILDREN,
     "Cannot create a symbolic link in a registry key that already has subkeys or values."},
    {1060, "The specified service does not exist as an installed service."},
    {1062, "The service has not been started."},
    {ERROR_NO_UNICODE_TRANSLATION,
     "No mapping for the Unicode character exists in the target multi-byte code page."},
    {ERROR_DLL_INIT_FAILED, "A dynamic link library (DLL) initialization routine failed."},
    {1117, "The request could not be performed because of an I/O device error."},
    {1167, "The device is not connected."},
    {ERROR_NOT_FOUND, "Element not found."},
    {ERROR_CANCELLED, "The operation was canceled by the user."},
    {ERROR_NOT_ALL_ASSIGNED, "Not all privileges or groups referenced are assigned to the caller."},
    {ERROR_NO_SUCH_PRIVILEGE, "A specified privilege does not exist."},
    {ERROR_PRIVILEGE_NOT_HELD, "A required privilege is not held by the client."},
    {1359, "An internal error occurred."},
    {ERROR_INVALID_WINDOW_HANDLE, "Invalid window handle."},
    {ERROR_CANNOT_FIND_WND_CLASS, "Cannot find window class."},
    {ERROR_CLASS_DOES_NOT_EXIST, "Class does not exist."},
    {ERROR_INVALID_INDEX, "Invalid index."},
    {ERROR_CONTROL_ID_NOT_FOUND, "Control ID not found."},
    {1450, "Insufficient system resources exist to complete the requested service."},
    {ERROR_TIMEOUT, "This operation returned because the timeout period expired."},
    {ERROR_UNSUPPORTED_TYPE, "Data of this type is not supported."},
    {1722, "The RPC server is unavailable."},
    {ERROR_INVALID_USER_BUFFER,
     "The supplied user buffer is not valid for the requested operation."},
    {ERROR_RESOURCE_DATA_NOT_FOUND, "The specified image file did not contain a resource section."},
    {ERROR_RESOURCE_TYPE_NOT_FOUND,
     "The specified resource type cannot be found in the image file."},
    {ERROR_RESOURCE_NAME_NOT_FOUND,
     "The specified resource name cannot be found in the image file."},
    {ERROR_RESOURCE_LANG_NOT_FOUND,
     "The specified resource language ID cannot be found in the image file."},
    {static_cast<DWORD>(E_NOTIMPL), "Not implemented"},
    {static_cast<DWORD>(E_NOINTERFACE), "No such interface supported"},
    {static_cast<DWORD>(E_POINTER), "Invalid pointer"},
    {static_cast<DWORD>(E_FAIL), "Unspecified error"},
    {static_cast<DWORD>(E_UNEXPECTED), "Catastrophic failure"},
    {static_cast<DWORD>(RPC_E_CHANGED_MODE), "Cannot change thread mode after it is set."},
    {static_cast<DWORD>(CLASS_E_NOAGGREGATION),
     "Class does not support aggregation (or class object is remote)"},
    {static_cast<DWORD>(REGDB_E_CLASSNOTREG), "Class not registered"},
    {static_cast<DWORD>(CO_E_NOTINITIALIZED), "CoInitialize has not been called."},
    {static_cast<DWORD>(CO_E_CLASSSTRING), "Invalid class string"},
};

static_assert(std::ranges::is_sorted(messages, {}, &Message::code));

}  // namespace

const char* SystemMessage(DWORD code) {
    const DWORD sought = (code & 0xFFFF0000) == 0x80070000 ? code & 0xFFFF : code;
    const auto* found = std::ranges::lower_bound(messages, sought, {}, &Message::code);
    return found != std::end(messages) && found->code == sought ? found->text : nullptr;
}

}  // namespace platform
