#include "unicomp/ProductLocation/interface/ProductPath.h"

#include "platform/known_folder.h"

#include <optional>

namespace {

using platform::EKnownFolder;

struct tagPlace {
    std::optional<EKnownFolder> Folder;
    std::wstring Path; // behind the folder
};

std::optional<tagPlace> FindPlace(const std::wstring& company, const std::wstring& product, ULONG location) {
    const std::wstring separator(1, platform::PathSeparator);
    const std::wstring own = company + separator + product;
    switch (location) {
    case ProductLocationRegistry:
        return tagPlace{std::nullopt, L"SOFTWARE\\" + company + L"\\" + product};
    case ProductLocationDocuments:
        return tagPlace{EKnownFolder::Documents, own};
    case ProductLocationLocalAppData:
        return tagPlace{EKnownFolder::LocalAppData, own};
    case ProductLocationAppData:
        return tagPlace{EKnownFolder::AppData, own};
    case ProductLocationCommonProgramFiles:
        return tagPlace{EKnownFolder::CommonProgramFiles,
                        L"DM Support" + separator + product + separator + L"Shared"};
    case ProductLocationName:
        return tagPlace{std::nullopt, product};
    case ProductLocationCommonAppData:
        return tagPlace{EKnownFolder::CommonAppData, own};
    default:
        return std::nullopt;
    }
}

} // namespace

LONG GetProductPath(BSTR* result, const std::wstring& company, const std::wstring& product, ULONG location,
                    int createDirectory) {
    if (!result)
        return E_POINTER;
    if (*result)
        return E_INVALIDARG;
    if (company.empty() || product.empty())
        return ErrorResourceDataNotFound;
    const auto place = FindPlace(company, product, location);
    if (!place)
        return E_INVALIDARG;
    std::wstring path;
    if (place->Folder) {
        const auto folder = platform::GetKnownFolder(*place->Folder);
        if (!folder)
            return E_FAIL;
        path = *folder;
        if (path.empty() || path.back() != platform::PathSeparator)
            path += platform::PathSeparator;
    }
    path += place->Path;
    *result = platform::CBstr(path).Detach();
    if (!createDirectory || !place->Folder)
        return 0;
    const int created = platform::CreateDirectoryTree(path);
    return created == 0 || created == platform::DirectoryExists ? 0 : 1;
}
