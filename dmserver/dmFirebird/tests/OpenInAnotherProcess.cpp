// Opens a database as a process of its own would, and says how that went:
//
//     dmFirebird_opener <path> <user> <password> [create] [hold]
//
// The first line is the status in decimal, the second the text of LastError. With "hold" a database that is open
// stays so until the standard input ends.
#include "dmserver/dmFirebird/interface/Database.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <iostream>
#include <vector>

int main(int count, char** arguments) {
    std::vector<std::wstring> words;
    for (int index = 1; index < count; ++index)
        words.push_back(platform::FromUtf8(arguments[index]));
    if (words.size() < 3)
        return 2;
    const auto has = [&](std::wstring_view word) {
        return std::find(words.begin() + 3, words.end(), word) != words.end();
    };

    platform::CComPtr<IDM_dmFirebird::IdmDatabase> database;
    if (FAILED(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, database)))
        return 3;
    const platform::CBstr path(words[0].c_str());
    const platform::CBstr user(words[1].c_str());
    const platform::CBstr password(words[2].c_str());
    const HRESULT status = has(L"create") ? database->Create(path.Get(), user.Get(), password.Get())
                                          : database->Open(path.Get(), user.Get(), password.Get());
    platform::CBstr error;
    database->get_LastError(error.Put());
    std::cout << status << '\n' << platform::ToUtf8(error.View()) << std::endl;
    std::string line;
    while (SUCCEEDED(status) && has(L"hold") && std::getline(std::cin, line))
        ;
    return 0;
}
