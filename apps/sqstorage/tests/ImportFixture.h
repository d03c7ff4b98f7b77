// Importing single files into a store of the test's own.
#pragma once

#include "Sandbox.h"

namespace sqCliTest {

class ImportSandbox : public Sandbox {
protected:
    static constexpr const char* Header = "FILE,ROWS,ADDED,UPDATED,UNCHANGED,DIFFERENT,REFUSED\n";

    void SetUp() override { Create(); }

    // Imports one file of that name and text.
    tagEnd Import(const std::string& name, std::string_view text, const std::vector<std::string>& options = {}) {
        std::vector<std::string> line{"--format", "csv", "import", Write(name, text).string()};
        line.insert(line.end(), options.begin(), options.end());
        return Run(line);
    }
    // What the summary says of the file.
    std::string Summary(const std::string& name, const std::string& counts) {
        return Header + (Folder() / name).string() + "," + counts + "\n";
    }
    std::string List(const std::string& what) { return Run({"--format", "csv", "list", what}).Output; }
    // One error for the file, at that line.
    void ExpectProblem(const std::string& name, std::string_view text, const std::string& problem) {
        const tagEnd end = Import(name, text);
        EXPECT_EQ(end.Status, 4);
        EXPECT_EQ(end.Errors, "error: " + (Folder() / name).string() + ":" + problem +
                                  ".\nwarning: Nothing is taken from " + (Folder() / name).string() +
                                  ": correct the rows named above and import it again.\n");
    }
};

} // namespace sqCliTest
