// A program under test on POSIX: posix_spawn, pipes, pseudo-terminals, signals.
#include "app/support/spawned_program.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace orvanta_tests {
namespace {

void check(bool succeeded, const char* what) {
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

struct pipe_ends {
    int read{-1};
    int write{-1};
};

pipe_ends make_pipe() {
    int ends[2];
    check(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
    return {ends[0], ends[1]};
}

void close_if_open(int& descriptor) {
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

// Programs under test may abort: no core files. This process ignores SIGPIPE, so that typing to one that has
// ended is no end of the test.
void prepare_for_children() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGPIPE, SIG_IGN);
}

// The steps of a child before it runs its program.
class spawn_plan {
  public:
    spawn_plan() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        sigset_t defaults;
        sigemptyset(&defaults);
        // Ignored by this process, or by the one that started the tests: a child would inherit that.
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
            sigaddset(&defaults, signal);
        }
        posix_spawnattr_setsigdefault(&attributes_, &defaults);
    }
    ~spawn_plan() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    spawn_plan(const spawn_plan&) = delete;
    spawn_plan& operator=(const spawn_plan&) = delete;

    void place(int descriptor, int at) { posix_spawn_file_actions_adddup2(&actions_, descriptor, at); }
    void open_terminal(const char* path) { posix_spawn_file_actions_addopen(&actions_, 0, path, O_RDWR, 0); }

    pid_t run(std::vector<std::string> command, bool own_session) {
        const int session = own_session ? POSIX_SPAWN_SETSID : 0;
        posix_spawnattr_setflags(&attributes_, static_cast<short>(POSIX_SPAWN_SETSIGDEF | session));
        std::vector<char*> arguments;
        arguments.reserve(command.size() + 1);
        for (std::string& word : command) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        pid_t process = -1;
        errno = posix_spawn(&process, arguments.front(), &actions_, &attributes_, arguments.data(), environ);
        check(errno == 0, command.front().c_str());
        return process;
    }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

const ending aborted{-1, SIGABRT};
const ending killed{-1, SIGKILL};

struct spawned_program::system_side {
    pid_t process{-1};
    int input{-1};
    std::array<int, 2> streams{-1, -1};
};

spawned_program::spawned_program(const std::vector<std::string>& command, attachment kind)
    : system_(std::make_unique<system_side>()) {
    prepare_for_children();
    spawn_plan plan;
    if (kind == attachment::pseudo_terminal) {
        int controller = -1;
        int terminal = -1;
        check(openpty(&controller, &terminal, nullptr, nullptr, nullptr) == 0, "openpty");
        fcntl(controller, F_SETFD, FD_CLOEXEC);
        fcntl(terminal, F_SETFD, FD_CLOEXEC);
        plan.open_terminal(ttyname(terminal));
        plan.place(0, 1);
        plan.place(0, 2);
        system_->process = plan.run(command, true);
        close(terminal);
        system_->input = fcntl(controller, F_DUPFD_CLOEXEC, 0);
        system_->streams[0] = controller;
        return;
    }
    pipe_ends input = make_pipe();
    pipe_ends output = make_pipe();
    pipe_ends errors = kind == attachment::pipes ? make_pipe() : pipe_ends{};
    plan.place(input.read, 0);
    plan.place(output.write, 1);
    plan.place(kind == attachment::pipes ? errors.write : output.write, 2);
    system_->process = plan.run(command, false);
    close(input.read);
    close(output.write);
    close_if_open(errors.write);
    system_->input = input.write;
    system_->streams = {output.read, errors.read};
}

spawned_program::~spawned_program() {
    if (system_->process > 0) {
        ::kill(system_->process, SIGKILL);
        while (waitpid(system_->process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    close_if_open(system_->input);
    close_if_open(system_->streams[0]);
    close_if_open(system_->streams[1]);
}

void spawned_program::type(std::string_view text) {
    check(write(system_->input, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "type");
}

void spawned_program::close_input() {
    close_if_open(system_->input);
}

void spawned_program::close_output() {
    close_if_open(system_->streams[0]);
}

void spawned_program::interrupt() {
    check(::kill(system_->process, SIGINT) == 0, "interrupt");
}

void spawned_program::terminate() {
    check(::kill(system_->process, SIGTERM) == 0, "terminate");
}

void spawned_program::kill() {
    check(::kill(system_->process, SIGKILL) == 0, "kill");
}

void spawned_program::suspend() {
    check(::kill(system_->process, SIGSTOP) == 0, "suspend");
}

bool spawned_program::is_open() const {
    return system_->streams[0] >= 0 || system_->streams[1] >= 0;
}

bool spawned_program::read(std::array<std::string, 2>& printed) {
    if (!is_open()) {
        return false;
    }
    std::array<pollfd, 2> watched{};
    for (std::size_t i = 0; i < 2; ++i) {
        watched[i] = {system_->streams[i], POLLIN, 0};
    }
    const int ready = poll(watched.data(), watched.size(), patience_ms);
    if (ready <= 0) {
        return ready < 0 && errno == EINTR;
    }
    for (std::size_t i = 0; i < 2; ++i) {
        if (watched[i].revents == 0) {
            continue;
        }
        std::array<char, 4096> piece{};
        const ssize_t size = ::read(watched[i].fd, piece.data(), piece.size());
        if (size > 0) {
            printed[i].append(piece.data(), static_cast<std::size_t>(size));
        } else {
            // The end of a pipe, or EIO: the last program has left the terminal.
            close_if_open(system_->streams[i]);
        }
    }
    return true;
}

std::uint64_t spawned_program::id() const {
    return static_cast<std::uint64_t>(system_->process);
}

std::size_t spawned_program::threads() const {
    const std::filesystem::directory_iterator tasks("/proc/" + std::to_string(system_->process) + "/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

ending spawned_program::wait() {
    int status = 0;
    while (waitpid(system_->process, &status, 0) < 0) {
        check(errno == EINTR, "waitpid");
    }
    system_->process = -1;
    return WIFSIGNALED(status) ? ending{-1, WTERMSIG(status)} : ending{WEXITSTATUS(status), 0};
}

} // namespace orvanta_tests
