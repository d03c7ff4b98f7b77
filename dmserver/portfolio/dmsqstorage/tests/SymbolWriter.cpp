// Inserts symbols without end, and says the number of each on a line of its own once the storage has answered that
// it is there. Whoever started it kills it.
//
//     symbol_writer FIRST      the number of the first symbol
#include "KilledSymbols.h"

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    using namespace tests;
    CComPtr<IqxStorage> storage;
    if (count != 2 || CStorageHost::Create(storage) != S_OK)
        return EXIT_FAILURE;
    for (LONG number = std::atoi(arguments[1]);; ++number) {
        LONG key = 0;
        if (InsertPortfolio(*storage.Get(), KilledSymbol(number), &key) != S_OK)
            return EXIT_FAILURE;
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}
