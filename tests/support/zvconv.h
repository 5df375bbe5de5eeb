#ifndef ZVUTIL_TESTS_ZVCONV_H
#define ZVUTIL_TESTS_ZVCONV_H

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "support/folder.h"

namespace test {

// A folder in which the tool is run, its standard output and error going to files there.
struct Zvconv {
    Folder folder;

    int run(const std::string& arguments) const {
        const int status = system(
            ("cd " + folder / "" + " && " ZVUTIL_ZVCONV " " + arguments + " >stdout 2>stderr")
                .c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // What it writes for a text, whatever its status.
    std::string convert(const std::string& arguments, const std::string& text) const {
        write("text", text);
        run(arguments + " text");
        return read("stdout");
    }
    void write(const char* name, const std::string& text) const { write_file(folder / name, text); }
    std::string read(const char* name) const { return content(folder / name); }
    bool says(const std::string& text) const {
        return read("stderr").find(text) != std::string::npos;
    }
};

// Tests of what zvconv has iconv do.
struct WithConverters : testing::Test {
#ifdef ZVUTIL_NO_CONVERTERS
    void SetUp() override {
        GTEST_SKIP() << ZVUTIL_NO_CONVERTERS;
    }
#endif
};

inline std::string sample(const std::string& name) {
    return content(ZVUTIL_TEXTS "/" + name + ".txt");
}

} // namespace test

#endif
