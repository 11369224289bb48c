// Servers that are full, and servers that go away and come back.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <pwd.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "postgres/postgres_engine.h"
#include "support/contract_test.h"

namespace {

using namespace contract;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char *kStops[] = {"SIGINT", "SIGQUIT", "SIGKILL"}; // in order, at once, and without a word

class RestartTest : public ContractTest {
protected:
    static std::string process(Connection &db) { return db.rows("select pg_backend_pid()").at(0).at(0).value(); }
};
ENGINE_SUITE(RestartTest);

TEST_P(RestartTest, TheNextPlainCallWorks) {
    for (const char *stop : kStops) {
        SCOPED_TRACE(stop);
        {
            Connection db = connect();
            db.run("drop table if exists t");
            makeTable(db, 1);
        }
        restartServer(stop);
        Connection db;
        ASSERT_EQ(db.connect(target()), 0U) << db.error();
        EXPECT_EQ(count(db), 1);
        fill(db, 2, 2);
        EXPECT_OK(db, qdc_commit(db));
    }
}

// As many connections as are kept: none of them is given on.
TEST_P(RestartTest, AllKeptConnectionsAreReplaced) {
    {
        std::vector<std::unique_ptr<Connection>> many;
        for (int i = 0; i < 8; ++i) {
            many.push_back(std::make_unique<Connection>(target()));
            process(*many.back());
        }
    }
    restartServer("SIGQUIT");
    for (int i = 0; i < 9; ++i) {
        Connection db = connect();
        EXPECT_EQ(db.rows("select 1"), Rows{rowOf("1")});
    }
}

TEST_P(RestartTest, ACallInsideATransactionFailsAndNothingIsRepeated) {
    for (const char *stop : kStops) {
        SCOPED_TRACE(stop);
        {
            Connection db = connect();
            db.run("drop table if exists t");
            makeTable(db, 1);
            fill(db, 2, 2);
            Statement open(db, "select id from t");
            open.readAhead(1);
            open.execute();
            restartServer(stop);
            const std::string refusal = db.refusal("insert into t (id) values (3)");
            EXPECT_THAT(refusal, AnyOf(StartsWith("57P01: "), StartsWith("57P02: "), StartsWith("08006: ")));
            EXPECT_NE(db.errorCode(), 0U);
            EXPECT_FAILS(qdc_commit(db));
            EXPECT_THAT(db.error(), AllOf(StartsWith("08006: "), HasSubstr("nothing was committed")));
            qdc_rollback(db);
            EXPECT_OK(db, qdc_disconnect(db));
        }
        Connection db = connect();
        EXPECT_EQ(db.rows("select id from t"), Rows{rowOf("1")});
    }
}

TEST_P(RestartTest, AFullServerSaysSo) {
    configure("client.pool=0\n");
    Connection keeper = connect();
    keeper.run("drop role if exists single");
    keeper.run("create role single login password 'of-a-single' connection limit 1");
    keeper.commit();
    const Target single = {target().address, "single", "of-a-single"};
    const Connection first(single);
    for (int i = 0; i < 2; ++i) {
        Connection second;
        EXPECT_FAILS(second.connect(single));
        EXPECT_EQ(second.errorCode(), 53300U);
        EXPECT_THAT(second.error(), AllOf(StartsWith("53300: "), HasSubstr("too many connections")));
    }
    EXPECT_OK(first, qdc_disconnect(first));
    Connection third;
    while (third.connect(single) != 0) // the server takes its time to see one go
        ASSERT_EQ(third.errorCode(), 53300U) << third.error();
}

// A file system of a few megabytes, for as long as it lives.
class SmallDisk {
public:
    SmallDisk() {
        root_ = std::filesystem::temp_directory_path() / "ormel_disk_XXXXXX";
        if (mkdtemp(root_.data()) == nullptr)
            throw std::runtime_error("no temporary directory can be made: " + root_);
        const passwd *server = getpwnam("postgres");
        const std::string options =
            "size=4m,mode=700,uid=" + std::to_string(server != nullptr ? server->pw_uid : geteuid());
        chmod(root_.c_str(), 0755);
        reason_ = mount("tmpfs", root_.c_str(), "tmpfs", 0, options.c_str()) == 0 ? "" : std::strerror(errno);
    }
    ~SmallDisk() {
        if (reason_.empty())
            umount2(root_.c_str(), MNT_DETACH);
        rmdir(root_.c_str());
    }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    const std::string &root() const { return root_; }
    // Why there is none.
    const std::string &reason() const { return reason_; }

private:
    std::string root_;
    std::string reason_;
};

TEST_P(RestartTest, AFullDiskOfTheServerFailsTheStatement) {
    const SmallDisk disk;
    if (!disk.reason().empty())
        GTEST_SKIP() << "no small file system can be mounted: " << disk.reason();
    runOnServer("create tablespace small location '" + disk.root() + "'");
    runOnServer("create table big (v text) tablespace small");
    {
        Connection db = connect();
        db.run("insert into big (v) values ('first')");
        db.commit();
        const char *insert = "insert into big (v) select md5(n::text) from generate_series(1, 200000) as n";
        EXPECT_THAT(db.refusal(insert), AllOf(StartsWith("53100: "), HasSubstr("No space left on device")));
        EXPECT_EQ(db.errorCode(), 53100U);
        EXPECT_FAILS(qdc_commit(db));
        EXPECT_THAT(db.error(), HasSubstr("rolled back"));
        EXPECT_EQ(db.rows("select v from big"), Rows{rowOf("first")});
    }
    runOnServer("drop table big");
    runOnServer("drop tablespace small");
}

} // namespace
