// Error channel modes from the environment, the fatal path, exit hooks, Pool and version helpers.
#include "Pool.h"
#include "error.h"
#include "init.h"
#include "version.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

static constexpr char kSrc[] = "ds/BitVec";

namespace {

[[noreturn]] void fatal_now() { VESK_FATAL(kSrc, "Bit index " << 40 << " out of bounds [0.." << 32 << ")"); }

struct ChildResult {
    int status;
    std::string out, err;
};

// Re-executes this test binary on the ModesChild test with the given environment, so that the
// process-wide channels are built with it, and captures both streams.
ChildResult run_child(const std::string& what, const char* var, const char* value) {
    TempDir dir;
    const std::string out = dir.path() + "/out", err = dir.path() + "/err";
    pid_t pid = fork();
    if (pid == 0) {
        if (!freopen(out.c_str(), "w", stdout) || !freopen(err.c_str(), "w", stderr))
            _exit(99);
        if (var)
            setenv(var, value, 1);
        setenv("VESK_MODES_CHILD", what.c_str(), 1);
        setenv("VESK_MODES_DIR", dir.path().c_str(), 1);
        execl("/proc/self/exe", "test_base", "--gtest_filter=ModesChild.Run", static_cast<char*>(nullptr));
        _exit(98);
    }
    ChildResult r{0, "", ""};
    waitpid(pid, &r.status, 0);
    r.out = read_file(out);
    r.err = read_file(err);
    return r;
}

bool aborted(int status) { return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT; }

// Hooks write straight to the descriptor: they run after the streams' own teardown.
void hook_a() {
    if (write(STDOUT_FILENO, "[hook a]", 8) < 0)
        _exit(97);
}
void hook_b() {
    if (write(STDOUT_FILENO, "[hook b]", 8) < 0)
        _exit(97);
}

} // namespace

// Bodies for the re-executed children; does nothing in a normal test run.
TEST(ModesChild, Run) {
    const char* what = std::getenv("VESK_MODES_CHILD");
    if (!what)
        return;
    const std::string w = what;
    if (w == "fatal")
        fatal_now();
    if (w == "hooks_exit" || w == "hooks_abort") {
        at_finish(hook_a);
        at_finish(hook_b);
        std::fflush(nullptr);
        if (w == "hooks_exit")
            std::exit(0);
        base_crash();
    }
}

TEST(ModesDeath, FatalLineOnErrorChannel) {
    EXPECT_DEATH(fatal_now(), R"(ds/BitVec\([0-9]+\): Bit index 40 out of bounds \[0\.\.32\))");
}

TEST(ModesDeath, ErrorLogZeroAbortsSilently) {
    ChildResult r = run_child("fatal", "BASE_ERR_LOG", "0");
    EXPECT_TRUE(aborted(r.status)) << r.status;
    EXPECT_EQ(r.out.find("ds/BitVec("), std::string::npos);
    EXPECT_EQ(r.err.find("ds/BitVec("), std::string::npos);
    // Text without digits converts to 0 as well.
    r = run_child("fatal", "BASE_ERR_LOG", "off");
    EXPECT_TRUE(aborted(r.status));
    EXPECT_EQ(r.err.find("ds/BitVec("), std::string::npos);
}

TEST(ModesDeath, ErrorActOutMovesTheLineToStdout) {
    ChildResult r = run_child("fatal", "BASE_ERR_ACT", "out");
    EXPECT_TRUE(aborted(r.status)) << r.status;
    EXPECT_NE(r.out.find("ds/BitVec("), std::string::npos) << r.out;
    EXPECT_EQ(r.err.find("ds/BitVec("), std::string::npos) << r.err;
}

TEST(ModesDeath, ErrorActToMissingDirectoryLosesTheLine) {
    ChildResult r = run_child("fatal", "BASE_ERR_ACT", "/nonexistent_dir_vesk/err.log");
    EXPECT_TRUE(aborted(r.status));
    EXPECT_EQ(r.out.find("ds/BitVec("), std::string::npos);
    EXPECT_EQ(r.err.find("ds/BitVec("), std::string::npos);
}

TEST(ModesDeath, NormalExitRunsHooksAbortDoesNot) {
    ChildResult ok = run_child("hooks_exit", nullptr, nullptr);
    EXPECT_TRUE(WIFEXITED(ok.status) && WEXITSTATUS(ok.status) == 0) << ok.status;
    EXPECT_NE(ok.out.find("[hook a][hook b]"), std::string::npos) << ok.out; // registration order
    ChildResult ab = run_child("hooks_abort", nullptr, nullptr);
    EXPECT_TRUE(aborted(ab.status));
    EXPECT_EQ(ab.out.find("[hook"), std::string::npos) << ab.out;
}

TEST(ModesDeath, CopyingAChannelPanics) {
    EXPECT_EXIT(
        {
            ActiveMode copy(*get_error_mode());
            (void)copy;
        },
        testing::ExitedWithCode(1), "PANIC: ActiveMode::ActiveMode called");
    EXPECT_EXIT(
        {
            ActiveMode m("VESK_NONE_A", 1, "VESK_NONE_B", 1, "VESK_NONE_C", &std::cerr);
            m = *get_error_mode();
        },
        testing::ExitedWithCode(1), "PANIC: ActiveMode::operator= called");
}

TEST(Modes, EnvironmentParsing) {
    setenv("VESK_T_OUT", "17", 1);
    setenv("VESK_T_LOG", "no digits", 1);
    unsetenv("VESK_T_ACT");
    {
        ActiveMode m("VESK_T_OUT", 1, "VESK_T_LOG", 1, "VESK_T_ACT", &std::cerr);
        EXPECT_EQ(m.m_out, 17);
        EXPECT_EQ(m.m_log, 0);
        EXPECT_EQ(m.m_stream, &std::cerr);
    }
    unsetenv("VESK_T_LOG");
    setenv("VESK_T_ACT", "OUT", 1);
    {
        ActiveMode m("VESK_T_OUT", 1, "VESK_T_LOG", 4, "VESK_T_ACT", &std::cerr);
        EXPECT_EQ(m.m_log, 4);
        EXPECT_EQ(m.m_stream, &std::cout);
    }
    setenv("VESK_T_ACT", "err", 1);
    {
        ActiveMode m("VESK_T_OUT", 1, "VESK_T_LOG", 1, "VESK_T_ACT", &std::cout);
        EXPECT_EQ(m.m_stream, &std::cerr);
    }
    TempDir dir;
    const std::string file = dir.path() + "/Err"; // not an exact "err"/"ERR": a file path
    setenv("VESK_T_ACT", file.c_str(), 1);
    {
        ActiveMode m("VESK_T_OUT", 1, "VESK_T_LOG", 1, "VESK_T_ACT", &std::cerr);
        EXPECT_NE(m.m_stream, &std::cerr);
        *m.m_stream << "to file" << std::flush;
    }
    EXPECT_EQ(read_file(file), "to file");
    unsetenv("VESK_T_OUT");
    unsetenv("VESK_T_ACT");
}

TEST(Modes, VersionHelpers) {
    EXPECT_STREQ(version(), "0.01");
    EXPECT_STREQ(sea_msg(), "this function should not be called");
    char prog[] = "prog", ver[] = "version", other[] = "x";
    char* one[] = {prog, ver};
    char* two[] = {prog, ver, other};
    char* wrong[] = {prog, other};
    testing::internal::CaptureStdout();
    EXPECT_TRUE(arg_version(2, one));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "prog 0.01\n");
    EXPECT_FALSE(arg_version(3, two));
    EXPECT_FALSE(arg_version(2, wrong));
    EXPECT_FALSE(arg_version(1, one));
}

namespace {
struct Big {
    double d[5];
    int tag;
};
} // namespace

TEST(Pool, BlocksHoldTheClassAndAreReused) {
    typedef Pool<Big, 32> BigPool;
    EXPECT_GE(BigPool::block_size(), sizeof(Big));
    std::set<void*> seen;
    std::vector<Big*> live;
    for (int i = 0; i < 40; ++i) {
        Big* b = new (BigPool::allocate()) Big{{1, 2, 3, 4, 5}, i};
        EXPECT_TRUE(seen.insert(b).second) << "block handed out twice";
        live.push_back(b);
    }
    EXPECT_EQ(BigPool::chunk_count(), 2u); // 32 blocks per chunk
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(live[i]->tag, i); // no two blocks overlap
    void* last = live.back();
    BigPool::release(last);
    EXPECT_EQ(BigPool::allocate(), last); // the released block comes back first
    for (Big* b : live)
        BigPool::release(b);
    BigPool::free_all();
    EXPECT_EQ(BigPool::chunk_count(), 0u);
}
