#ifndef ZVUTIL_TESTS_ZVCONV_H
#define ZVUTIL_TESTS_ZVCONV_H

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "support/folder.h"
#include "support/oracle.h"

namespace test {

// A folder in which the tool is run, its standard output and error going to files there.
struct Zvconv {
    Folder folder;

    int run(const std::string& arguments) const {
        const std::string command = "cd " + folder / "" + " && " ZVUTIL_ZVCONV " " + arguments;
        const int status = system((command + " >stdout 2>stderr").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // Runs it, which ends with that status and says that.
    void expect(int status, const std::string& arguments, const std::string& message = "") const {
        EXPECT_EQ(run(arguments), status) << arguments << ": " << read("stderr");
        EXPECT_TRUE(says(message)) << arguments << ": " << message << ": " << read("stderr");
    }
    // What it writes for a text, whatever its status.
    std::string convert(const std::string& arguments, const std::string& text) const {
        write("text", text);
        run(arguments + " text");
        return read("stdout");
    }
    void write(const std::string& name, const std::string& text) const {
        write_file(folder / name.c_str(), text);
    }
    std::string read(const std::string& name) const { return content(folder / name.c_str()); }
    bool says(const std::string& text) const {
        return read("stderr").find(text) != std::string::npos;
    }
    // What a mail program shows of the subjects that a command in the folder writes.
    std::string subjects_by(const std::string& command) const {
        return output_of("cd " + folder / "" + " && " + command +
                         " | PYTHONIOENCODING=utf-8 python3 " ZVUTIL_TEXTS "/../read_subjects.py");
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
// The sample texts: what the tool and iconv call their encodings.
inline constexpr struct {
    const char *sample, *name, *iconv;
} kSamples[] = {
    {"japanese.sjis", "SJIS", "SJIS"},         {"japanese.euc", "EUC", "EUC-JP"},
    {"japanese.jis", "JIS", "ISO-2022-JP"},    {"chinese.big5", "BIG5", "BIG5"},
    {"chinese.euctw", "EUC_H", "EUC-TW"},      {"russian.8859-5", "8859_5", "ISO-8859-5"},
    {"polish.8859-2", "8859_2", "ISO-8859-2"},
};

} // namespace test

#endif
