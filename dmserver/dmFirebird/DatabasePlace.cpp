#include "DatabasePlace.h"

#include <cerrno>
#include <firebird/Interface.h>

namespace IDM_dmFirebird {

namespace {

bool IsLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// The ":" that ends the name of the host; npos when there is none.
std::size_t EndOfHost(std::wstring_view path) {
    if (path.empty() || path.front() == L'/' || path.front() == L'\\' || path.front() == L'.')
        return std::wstring_view::npos;
    if (path.front() == L'[') {
        const std::size_t bracket = path.find(L']');
        return bracket == std::wstring_view::npos ? bracket : path.find(L':', bracket);
    }
    const std::size_t colon = path.find(L':');
    if (colon == 0 || (colon == 1 && IsLetter(path.front())))
        return std::wstring_view::npos;
    return colon;
}

std::wstring Quoted(std::wstring_view text) { return L"\"" + std::wstring(text) + L"\""; }

std::wstring ServerName(const tagDatabasePlace& place) {
    return Quoted(place.Host) + (place.Port.empty() ? L"" : L" at port " + Quoted(place.Port));
}

std::wstring Parent(const std::wstring& file) {
    const std::size_t separator = file.rfind(L'/');
    return separator == std::wstring::npos ? L"." : separator == 0 ? L"/" : file.substr(0, separator);
}

struct tagSystemWords {
    int Error;
    const wchar_t* Words;
};
constexpr tagSystemWords SystemWords[] = {
    {ENOENT, L"; No such file or directory"},
    {EACCES, L"; Permission denied"},
    {EEXIST, L"; File exists"},
    {ENOTDIR, L"; Not a directory"},
    {EISDIR, L"; Is a directory"},
    {ENOSPC, L"; No space left on device"},
    {EROFS, L"; Read-only file system"},
};

// A server sends its system's error as words alone.
int SystemErrorOf(const tagEngineReport& report) {
    if (report.SystemError != 0)
        return report.SystemError;
    for (const tagSystemWords& known : SystemWords)
        if (report.Text.find(known.Words) != std::wstring::npos)
            return known.Error;
    return 0;
}

bool IsForbidden(const tagEngineReport& report) {
    const int error = SystemErrorOf(report);
    return error == EACCES || error == EPERM || error == EROFS || report.Has(isc_no_priv);
}

constexpr const wchar_t* EngineMissing = L"the embedded database engine is missing: install the package "
                                         L"firebird3.0-server-core, or name a server in the "
                                         L"path as host:path.";

// What can go wrong before the file is looked at, whether it is opened or created; empty when it is not that.
std::wstring DescribeRefusal(const tagEngineReport& report, const tagDatabasePlace& place,
                             std::wstring_view userName) {
    if (report.Has(isc_network_error)) {
        if (place.IsEmbedded())
            return std::wstring(L"The database file ") + Quoted(place.File) + L" cannot be opened, " +
                   EngineMissing;
        return L"The database server " + ServerName(place) +
               L" cannot be reached: check its name and port, and that it runs.";
    }
    if (report.HasAny({isc_login, isc_login_error, isc_login_same_as_role_name}))
        return L"The database server refused the user " + Quoted(userName) +
               L": check the user name and the password.";
    if (report.Has(isc_unavailable) && place.IsEmbedded()) {
        if (place.File.find(L':') != std::wstring::npos)
            return L"The database file " + Quoted(place.File) +
                   L" cannot be used because of the \":\" in its path: choose a path without one.";
        return std::wstring(L"The database file ") + Quoted(place.File) + L" cannot be opened, " + EngineMissing;
    }
    if (report.Has(isc_sys_request))
        return L"The database engine cannot use its directory for lock files: give the user access to it, or name "
               L"another directory in the environment variable FIREBIRD_LOCK.";
    return {};
}

} // namespace

tagDatabasePlace ParseDatabasePlace(std::wstring_view path) {
    tagDatabasePlace place;
    place.Path = path;
    const std::size_t end = EndOfHost(path);
    if (end == std::wstring_view::npos) {
        place.File = path;
        return place;
    }
    const std::wstring_view server = path.substr(0, end);
    const std::size_t slash = server.find(L'/');
    place.Host = server.substr(0, slash);
    if (slash != std::wstring_view::npos)
        place.Port = server.substr(slash + 1);
    place.File = path.substr(end + 1);
    return place;
}

std::wstring DescribeOpenFailure(const tagEngineReport& report, const tagDatabasePlace& place,
                                 std::wstring_view userName) {
    if (std::wstring refusal = DescribeRefusal(report, place, userName); !refusal.empty())
        return refusal;
    const std::wstring file = L"The database file " + Quoted(place.File);
    if (report.HasAny({isc_instance_conflict, isc_already_opened, isc_lock_conflict}))
        return file + L" is in use by another process: close that one, or share the database through a server.";
    if (SystemErrorOf(report) == ENOENT || SystemErrorOf(report) == ENOTDIR)
        return file + L" does not exist: create the database first, or correct the path.";
    if (IsForbidden(report))
        return file + L" may not be read and written by this user: change the file's permissions.";
    if (SystemErrorOf(report) == EISDIR)
        return file + L" is a directory: name a file in it.";
    if (report.HasAny({isc_bad_db_format, isc_wrong_ods, isc_badodsver, isc_io_read_err, isc_random}))
        return file + L" is no database that this engine can read: correct the path, or restore the file from a "
                      L"backup.";
    return file + L" cannot be opened.";
}

std::wstring DescribeCreateFailure(const tagEngineReport& report, const tagDatabasePlace& place,
                                   std::wstring_view userName) {
    if (std::wstring refusal = DescribeRefusal(report, place, userName); !refusal.empty())
        return refusal;
    const std::wstring file = L"The database file " + Quoted(place.File);
    if (SystemErrorOf(report) == EEXIST || report.HasAny({isc_db_or_file_exists, isc_file_in_use, isc_obj_in_use}))
        return file + L" exists already and is left as it is: open it, or choose another path.";
    if (SystemErrorOf(report) == ENOENT || SystemErrorOf(report) == ENOTDIR)
        return file + L" cannot be created because the directory " + Quoted(Parent(place.File)) +
               L" does not exist: create the directory first.";
    if (IsForbidden(report))
        return file + L" may not be created by this user: change the directory's permissions.";
    if (SystemErrorOf(report) == ENOSPC)
        return file + L" cannot be created because the disk is full.";
    return file + L" cannot be created.";
}

} // namespace IDM_dmFirebird
