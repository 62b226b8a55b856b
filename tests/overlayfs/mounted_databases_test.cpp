// SPDX-License-Identifier: GPL-2.0-or-later
// Databases, and the locks and maps that they and their like build on.
#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedDatabases : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/text", "from the disc\n");
    const CommandResult made = runShell("cd " + trees.disc() +
                                        " && sqlite3 plain.db 'create table t(a); insert into t "
                                        "values(1)' && sqlite3 wal.db 'pragma journal_mode=wal; "
                                        "create table t(a); insert into t values(1)'");
    ASSERT_EQ(made.status, 0) << made.output;
    mount();
  }
};

TEST_F(MountedDatabases, SqliteKeepsADatabase) {
  EXPECT_EQ(sh("sqlite3 new.db 'create table t(a); insert into t values(1),(2);"
               " delete from t where a=1; vacuum; select a from t; pragma integrity_check;'"),
            "2\nok\n");
}

TEST_F(MountedDatabases, SqliteKeepsADatabaseWithAWriteAheadLog) {
  EXPECT_EQ(sh("sqlite3 new.db 'pragma journal_mode=wal; create table t(a); insert into t "
               "values(1); pragma wal_checkpoint(truncate); select a from t; pragma "
               "integrity_check;'"),
            "wal\n0|0|0\n1\nok\n");
}

TEST_F(MountedDatabases, ManyProcessesWriteIntoOneDatabaseWithAWriteAheadLog) {
  sh("sqlite3 new.db 'pragma journal_mode=wal; create table t(a)' && for n in 1 2 3 4; do"
     " (for i in 1 2 3 4 5 6 7 8 9 10; do sqlite3 -cmd '.timeout 60000' new.db \"insert into t "
     "values($n)\" || exit 1; done) & pids=\"$pids $!\"; done; for p in $pids; do wait $p || exit "
     "1; done");
  EXPECT_EQ(sh("sqlite3 new.db 'select count(*) from t; pragma integrity_check'"), "40\nok\n");
}

TEST_F(MountedDatabases, SqliteReadsADatabaseOfTheDiscAndRefusesToChangeIt) {
  for (const std::string name : {"plain.db", "wal.db"}) {
    EXPECT_EQ(sh("sqlite3 " + name + " 'select a from t'"), "1\n");
    EXPECT_NE(shFails("sqlite3 " + name + " 'insert into t values(2)'").find("readonly"),
              std::string::npos);
    EXPECT_EQ(sh("sqlite3 " + name + " 'select a from t; pragma integrity_check'"), "1\nok\n");
  }
}

TEST_F(MountedDatabases, SqliteChangesADatabaseOfTheDiscOnceThatHasBeenCopied) {
  for (const std::string name : {"plain.db", "wal.db"}) {
    EXPECT_EQ(sh("mv " + name + " x && mv x " + name + " && sqlite3 " + name +
                 " 'insert into t values(2); select count(*) from t; pragma integrity_check'"),
              "2\nok\n");
  }
}

TEST_F(MountedDatabases, LocksKeepOthersOut) {
  // For each kind of lock: a second process does not get it while the first holds it.
  sh("cat > ../lock.py <<'END'\n"
     "import fcntl, os, sys\n"
     "kind = {'flock': fcntl.flock, 'record': fcntl.lockf}[sys.argv[1]]\n"
     "file = open('locked', 'r+b')\n"
     "kind(file, fcntl.LOCK_EX | fcntl.LOCK_NB)\n"
     "if os.fork() == 0:\n"
     "    second = open('locked', 'r+b')\n"
     "    try:\n"
     "        kind(second, fcntl.LOCK_EX | fcntl.LOCK_NB)\n"
     "    except OSError:\n"
     "        os._exit(0)\n"
     "    os._exit(1)\n"
     "sys.exit(os.waitstatus_to_exitcode(os.wait()[1]))\n"
     "END\n"
     "echo x > locked && python3 ../lock.py flock && python3 ../lock.py record");
}

TEST_F(MountedDatabases, AFileOfTheDiscCanBeLockedByItsReaders) {
  sh("flock -n text true && flock -s -n text flock -s -n text true && ! flock -n text flock -n "
     "text "
     "true");
}

}  // namespace
}  // namespace kelvane::tests
