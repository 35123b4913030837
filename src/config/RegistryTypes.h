#pragma once

#include <QtGlobal>

// The two root keys the console uses. Each has its own hive file.
enum class RegistryRoot { LocalMachine, CurrentUser };

// Value types, numbered as the registry numbers them.
namespace RegistryType {
constexpr quint32 None = 0;
constexpr quint32 String = 1;
constexpr quint32 ExpandString = 2;
constexpr quint32 Binary = 3;
constexpr quint32 DWord = 4;
constexpr quint32 MultiString = 7;
constexpr quint32 QWord = 11;
} // namespace RegistryType

// Status codes of registry calls, numbered as the Win32 error codes they stand for.
namespace RegistryStatus {
constexpr qint32 Success = 0;
constexpr qint32 FileNotFound = 2;
constexpr qint32 AccessDenied = 5;
constexpr qint32 InvalidHandle = 6;
constexpr qint32 InvalidParameter = 87;
constexpr qint32 MoreData = 234;
constexpr qint32 BadDatabase = 1009; // the hive file cannot be parsed
constexpr qint32 KeyDeleted = 1018;
constexpr qint32 ChildMustBeVolatile = 1021; // a lasting key under a volatile one
constexpr qint32 UnsupportedType = 1630; // the value is not of the type asked for
constexpr qint32 WriteFault = 29;
} // namespace RegistryStatus
