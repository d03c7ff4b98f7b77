// Where a product of a company keeps its things: a registry key or a folder, by the kind of place.
//
// Registry paths are separated by "\", folders by the system's own separator.
#pragma once

#include "platform/com/bstr.h"

#include <string>

enum ProductLocation : ULONG {
    ProductLocationRegistry = 0,           // "SOFTWARE\company\product", below any registry root
    ProductLocationDocuments = 1,          // the user's documents
    ProductLocationLocalAppData = 2,       // local application data
    ProductLocationAppData = 3,            // application data
    ProductLocationCommonProgramFiles = 4, // common program files, "DM Support", product, "Shared"
    ProductLocationName = 5,               // the product's name alone
    ProductLocationCommonAppData = 6,      // common application data
};

// 1812: the executable says neither its company nor its product.
inline constexpr LONG ErrorResourceDataNotFound = 1812;

// Gives the path as a new string that the caller frees, and creates the directory when asked and when the location
// is one. Answers
//   0              done; a directory that exists already is fine
//   1              the path is given, but its directory could not be created
//   E_POINTER      `result` is null
//   E_INVALIDARG   `*result` holds a string already; it is left alone. Or the location is none of the above
//   1812           company or product is empty
//   E_FAIL         there is no such folder; `*result` stays null
LONG GetProductPath(BSTR* result, const std::wstring& company, const std::wstring& product, ULONG location,
                    int createDirectory);
