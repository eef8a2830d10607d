// Error channel modes from the environment, the fatal path, exit hooks, Pool and version helpers.
#include "Pool.h"
#include "error.h"
#include "init.h"
#include "version.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
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
template <char C> void hook() {
    const char text[] = {'[', 'h', 'o', 'o', 'k', ' ', C, ']'};
    if (write(STDOUT_FILENO, text, sizeof text) < 0)
        _exit(97);
}

struct Big {
    double d[5];
    int tag;
};

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
        at_finish(hook<'a'>);
        at_finish(hook<'b'>);
        std::fflush(nullptr);
        if (w == "hooks_exit")
            std::exit(0);
        base_crash();
    }
}

TEST(ModesDeath, FatalLineOnErrorChannel) {
    EXPECT_DEATH(fatal_now(), R"(ds/BitVec\([0-9]+\): Bit index 40 out of bounds \[0\.\.32\))");
}

// The fatal line's channel set from the environment; in every case the process aborts.
TEST(ModesDeath, ChannelModesOfTheFatalLine) {
    const struct {
        const char *var, *value;
        bool on_out, on_err;
    } cases[] = {
        {"BASE_ERR_LOG", "0", false, false},
        {"BASE_ERR_ACT", "out", true, false},
        {"BASE_ERR_ACT", "/nonexistent_dir_vesk/err.log", false, false}, // the line is lost
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.var) + "=" + c.value);
        const ChildResult r = run_child("fatal", c.var, c.value);
        EXPECT_TRUE(aborted(r.status)) << r.status;
        EXPECT_EQ(r.out.find("ds/BitVec(") != std::string::npos, c.on_out) << r.out;
        EXPECT_EQ(r.err.find("ds/BitVec(") != std::string::npos, c.on_err) << r.err;
    }
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
    EXPECT_EXIT(ActiveMode copy(*get_error_mode()), testing::ExitedWithCode(1),
                "PANIC: ActiveMode::ActiveMode called");
    EXPECT_EXIT(ActiveMode("VESK_NONE_A", 1, "VESK_NONE_B", 1, "VESK_NONE_C", &std::cerr) = *get_error_mode(),
                testing::ExitedWithCode(1), "PANIC: ActiveMode::operator= called");
}

TEST(Modes, EnvironmentParsing) {
    auto mode = [](const char* log, const char* act, int log_default, std::ostream* dflt) {
        for (auto kv : {std::make_pair("VESK_T_LOG", log), std::make_pair("VESK_T_ACT", act)})
            kv.second ? setenv(kv.first, kv.second, 1) : unsetenv(kv.first);
        return std::make_unique<ActiveMode>("VESK_T_OUT", 1, "VESK_T_LOG", log_default, "VESK_T_ACT", dflt);
    };
    setenv("VESK_T_OUT", "17", 1);
    auto plain = mode("no digits", nullptr, 1, &std::cerr);
    EXPECT_EQ(plain->m_out, 17);
    EXPECT_EQ(plain->m_log, 0);
    EXPECT_EQ(plain->m_stream, &std::cerr);
    auto out = mode(nullptr, "OUT", 4, &std::cerr);
    EXPECT_EQ(out->m_log, 4);
    EXPECT_EQ(out->m_stream, &std::cout);
    EXPECT_EQ(mode(nullptr, "err", 1, &std::cout)->m_stream, &std::cerr);
    TempDir dir;
    const std::string file = dir.path() + "/Err"; // not an exact "err"/"ERR": a file path
    {
        auto to_file = mode(nullptr, file.c_str(), 1, &std::cerr);
        EXPECT_NE(to_file->m_stream, &std::cerr);
        *to_file->m_stream << "to file" << std::flush;
    }
    EXPECT_EQ(read_file(file), "to file");
    unsetenv("VESK_T_OUT");
    unsetenv("VESK_T_ACT");
}

TEST(Modes, VersionHelpers) {
    EXPECT_STREQ(version(), "0.01");
    EXPECT_STREQ(sea_msg(), "this function should not be called");
    char prog[] = "prog", ver[] = "version", other[] = "x";
    char* args[] = {prog, ver, other};
    char* wrong[] = {prog, other};
    testing::internal::CaptureStdout();
    EXPECT_TRUE(arg_version(2, args));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "prog 0.01\n");
    EXPECT_FALSE(arg_version(3, args));
    EXPECT_FALSE(arg_version(2, wrong));
    EXPECT_FALSE(arg_version(1, args));
}

TEST(Pool, BlocksHoldTheClassAndAreReused) {
    typedef Pool<Big, 32> BigPool;
    EXPECT_GE(BigPool::block_size(), sizeof(Big));
    std::vector<Big*> live;
    for (int i = 0; i < 40; ++i)
        live.push_back(new (BigPool::allocate()) Big{{1, 2, 3, 4, 5}, i});
    EXPECT_EQ(BigPool::chunk_count(), 2u); // 32 blocks per chunk
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(live[i]->tag, i); // no block handed out twice, no two blocks overlap
    void* last = live.back();
    BigPool::release(last);
    EXPECT_EQ(BigPool::allocate(), last); // the released block comes back first
    for (Big* b : live)
        BigPool::release(b);
    BigPool::free_all();
    EXPECT_EQ(BigPool::chunk_count(), 0u);
}
