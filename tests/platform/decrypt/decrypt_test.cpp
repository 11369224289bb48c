#include "support/child.h"
#include "support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using ormel::test::Outcome;
using ormel::test::run;
using ormel::test::ServerDir;
using ormel::test::TempDir;
using ormel::test::writeFile;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Decrypt : public testing::Test {
protected:
    void password(const std::string &text, mode_t mode = 0600) { put(server_.conf("db.password"), text, mode); }
    void credential(const std::string &text) { put(credentials_ / "ormel-db-password", text, 0644); }

    Outcome load() const { return run(server_.bin(), {ORMEL_SHOW_PASSWORD}, {"CREDENTIALS_DIRECTORY="}); }
    Outcome loadAsService() const {
        return run(server_.bin(), {ORMEL_SHOW_PASSWORD}, {"CREDENTIALS_DIRECTORY=" + credentials_.path().string()});
    }

    // What was found, without a word on standard error.
    static void expectFound(const Outcome &outcome, const std::string &text) {
        EXPECT_EQ(outcome.out, "<" + text + ">\n");
        EXPECT_EQ(outcome.err, "");
    }
    // Nothing was found, and one line says why.
    static void expectRefused(const Outcome &outcome, const std::string &reason) {
        EXPECT_EQ(outcome.out, "<>\n");
        EXPECT_THAT(outcome.err, AllOf(HasSubstr(reason), Not(HasSubstr("s3cret"))));
        EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    }

    ServerDir server_;
    TempDir credentials_;

private:
    static void put(const std::filesystem::path &path, const std::string &text, mode_t mode) {
        writeFile(path, text);
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }
};

TEST_F(Decrypt, SaysNothingWhereThereIsNoFile) {
    expectFound(load(), "");
}

TEST_F(Decrypt, SaysNothingWhereThereIsNoConfDirectory) {
    const TempDir bare;
    expectFound(run(bare.path(), {ORMEL_SHOW_PASSWORD}, {"CREDENTIALS_DIRECTORY="}), "");
}

TEST_F(Decrypt, TakesTheFile) {
    password("s3cret with blanks ");
    expectFound(load(), "s3cret with blanks ");
}

TEST_F(Decrypt, CutsTheLineEnd) {
    for (const char *end : {"\n", "\r\n", "\n\n"}) {
        password(std::string("s3cret") + end);
        expectFound(load(), "s3cret");
    }
}

TEST_F(Decrypt, KeepsLineEndsInside) {
    password("s3\ncret\n");
    expectFound(load(), "s3\ncret");
}

TEST_F(Decrypt, TakesUpToTheLongestPasswordThatTheLibraryKeeps) {
    const std::string longest(254, 'x');
    password(longest + "\n");
    expectFound(load(), longest);
    password(longest + "x\n");
    expectRefused(load(), "more than 254 bytes");
    password(std::string(100000, 'x'));
    expectRefused(load(), "more than 254 bytes");
}

TEST_F(Decrypt, RefusesAFileThatOthersCanRead) {
    for (const mode_t mode : {0640u, 0604u, 0644u, 0660u}) {
        password("s3cret\n", mode);
        const Outcome outcome = load();
        expectRefused(outcome, "\"../conf/db.password\"");
        EXPECT_THAT(outcome.err, HasSubstr("chmod 600 " + server_.conf("db.password").string() + "\n"));
    }
}

TEST_F(Decrypt, TakesAFileThatOnlyItsOwnerCanRead) {
    for (const mode_t mode : {0400u, 0600u, 0700u}) {
        password("s3cret\n", mode);
        expectFound(load(), "s3cret");
    }
}

// As where a secret is mounted: the link's own mode means nothing, the file's does.
TEST_F(Decrypt, FollowsALinkToTheFile) {
    password("s3cret\n");
    std::filesystem::rename(server_.conf("db.password"), server_.conf("mounted"));
    std::filesystem::create_symlink("mounted", server_.conf("db.password"));
    expectFound(load(), "s3cret");
    chmod(server_.conf("mounted").c_str(), 0644);
    expectRefused(load(), "chmod 600");
}

TEST_F(Decrypt, RefusesAnEmptyFile) {
    for (const char *text : {"", "\n", "\r\n"}) {
        password(text);
        expectRefused(load(), "empty");
    }
}

TEST_F(Decrypt, RefusesANulByte) {
    password(std::string("s3cret\0more\n", 12));
    expectRefused(load(), "NUL");
    password(std::string("s3cret\0", 7));
    expectRefused(load(), "NUL");
}

TEST_F(Decrypt, RefusesWhatIsNoFileWithoutWaiting) {
    ASSERT_EQ(mkfifo(server_.conf("db.password").c_str(), 0600), 0);
    expectRefused(load(), "\"../conf/db.password\": it is not a regular file");
}

TEST_F(Decrypt, GivesTheSystemsReason) {
    std::filesystem::create_symlink("db.password", server_.conf("db.password"));
    expectRefused(load(), "Too many levels of symbolic links");
}

TEST_F(Decrypt, PrefersTheCredentialOfAService) {
    password("of the file\n");
    credential("s3cret\n");
    expectFound(loadAsService(), "s3cret");
    expectFound(load(), "of the file");
}

TEST_F(Decrypt, TakesTheFileOfAServiceWithoutThatCredential) {
    password("s3cret\n");
    expectFound(loadAsService(), "s3cret");
}

TEST_F(Decrypt, DoesNotHideABadCredentialBehindTheFile) {
    password("of the file\n");
    credential("\n");
    expectRefused(loadAsService(), credentials_.path().string() + "/ormel-db-password\": it is empty");
}

} // namespace
