// Which copy modes a user without privileges may carry out, asked before anything changes. Root
// passes every permission check, so the checks run in a child working as another user.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "guard_harness.h"

namespace marigold::guard_test {
namespace {

struct PrivilegeCase {
  std::string source, dest;  // relative to the temporary folder
  int copyMode;
  int want;
  std::string problem;       // LastPrivilegeProblem, "<T>" standing for the temporary folder
};

class Privileges : public ::testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
    trees::Build(call.temp.Path(), {{"src/open.txt", "o"}, {"src/secret.txt", "s"}, {"rootdir/", ""},
                                    {"mine/own.txt", "m"}, {"sticky/theirs.txt", "t"}, {"mine/Pkg.app/inner/x", "x"}});
    GiveTree(call.temp.Join("mine"), kNobody);
    ::lchown(call.temp.Join("mine/Pkg.app/inner").c_str(), 0, 0);
    ::lchown(call.temp.Join("mine/Pkg.app/inner/x").c_str(), 0, 0);
    ASSERT_EQ(::chmod(call.temp.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(call.temp.Join("src/secret.txt").c_str(), 0600), 0);
    ASSERT_EQ(::chmod(call.temp.Join("mine").c_str(), 0555), 0);
    ASSERT_EQ(::chmod(call.temp.Join("sticky").c_str(), 01777), 0);
  }

  // Each case's result and problem, one line each, as the user sees them.
  std::string Check(const std::vector<PrivilegeCase>& cases, bool asNobody) {
    auto body = [&] {
      std::string out;
      for (const PrivilegeCase& c : cases) {
        const int result = call.guard.CheckPrivilegesOnFiles(call.state, call.temp.Join(c.source),
                                                              call.temp.Join(c.dest), c.copyMode);
        out += std::to_string(result) + " " + call.guard.LastPrivilegeProblem() + "\n";
      }
      return out;
    };
    return asNobody ? OutputAsUser(kNobody, body) : body();
  }

  std::string Expected(const std::vector<PrivilegeCase>& cases) {
    std::string out;
    for (const PrivilegeCase& c : cases) {
      std::string problem = c.problem;
      for (std::size_t at; (at = problem.find("<T>")) != std::string::npos;) problem.replace(at, 3, call.temp.Path());
      out += std::to_string(c.want) + " " + problem + "\n";
    }
    return out;
  }

  GuardCall call;
};

TEST_F(Privileges, RefuseWhatTheUserCannotDo) {
  const std::vector<PrivilegeCase> cases = {
      {"src/open.txt", "rootdir/open.txt", 2, 1, "Can't write the item \"<T>/rootdir\" on that file or its parent folders"},
      {"src/secret.txt", "mine/secret.txt", 2, 1, "Can't read the item \"<T>/src/secret.txt\""},
      // A read-only folder of the user's own: the run opens it.
      {"src/open.txt", "mine/open.txt", 2, 0, ""},
      {"src/open.txt", "sticky/theirs.txt", 4, 1,
       "Can't delete the item \"<T>/sticky/theirs.txt\" on that file or its parent folders"},
      {"src/none", "mine/own.txt", 7, 0, ""},
      {"src/none", "mine/Pkg.app", 7, 1, "Can't delete the item \"<T>/mine/Pkg.app\" on some of the items of the filePackage"},
      {"src/open.txt", "mine/own.txt", 9, 1, "Can't write the item \"<T>/src/open.txt\" on that file or its parent folders"},
      {"mine", "rootdir", 1, 0, ""},
      {"src/secret.txt", "rootdir", 1, 1, "Can't read the item \"<T>/src/secret.txt\""},
  };
  EXPECT_EQ(Check(cases, true), Expected(cases));
}

TEST_F(Privileges, CountLocksAsTheSessionSays) {
  ASSERT_TRUE(call.fs.SetLocked(call.temp.Join("src/open.txt"), true));
  const std::vector<PrivilegeCase> cases = {
      {"src/open.txt", "rootdir/none", 6, 2, "Can't delete the item \"<T>/src/open.txt\" on that file or its parent folders"}};
  call.state.session.gIsUnlockOn = false;
  EXPECT_EQ(Check(cases, false), Expected(cases));
  // Handled by root: the run will unlock it.
  call.state.session.gIsUnlockOn = true;
  EXPECT_EQ(Check(cases, false), "0 \n");
  // Handled, but only root can unlock.
  std::vector<PrivilegeCase> asUser = cases;
  asUser[0].want = 1;
  EXPECT_EQ(Check(cases, true), Expected(asUser));
}

// A run by a user who may not write the destination copies nothing and says why.
TEST(PrivilegeRefusals, LeaveTheDestinationAsItWas) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
  GuardRun run;
  trees::Build(run.A(), {{"a.txt", "a"}, {"docs/b.txt", "b"}});
  trees::Build(run.B(), {{"docs/", ""}});
  GiveTree(run.A(), kNobody);
  ASSERT_EQ(::chmod(run.temp.Path().c_str(), 0755), 0);

  const std::string out = OutputAsUser(kNobody, [&] {
    run.Run();
    std::string errors;
    for (const std::string& error : run.Errors()) errors += error.substr(0, error.find('\r')) + "\n";
    return errors;
  });

  EXPECT_EQ(out, "Insufficient Privileges \"" + run.B("a.txt") + "\"\nInsufficient Privileges \"" + run.B("docs/b.txt") +
                     "\"\nCan't copy the file \"" + run.A("a.txt") + "\"\nCan't copy the file \"" + run.A("docs/b.txt") +
                     "\"\n");
  EXPECT_EQ(trees::Read(run.B()), (trees::Tree{{"docs/", ""}}));
}

}  // namespace
}  // namespace marigold::guard_test
