// A program run by a test.
#include "app/support/child_process.hpp"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace orvanta_test {
namespace {

constexpr int patience_ms = 60'000;

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

// Programs under test may abort: no core files. They get the default SIGPIPE, which this process
// ignores so that typing to one that has ended is no end of the test.
void prepare_for_children() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGPIPE, SIG_IGN);
}

// What a child does before it runs its program.
class spawn_plan {
  public:
    spawn_plan() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
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

    pid_t run(std::vector<std::string>& command, bool own_session) {
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

child_process::child_process(std::vector<std::string> command, attachment kind) {
    prepare_for_children();
    spawn(command, kind);
}

child_process::~child_process() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    close_if_open(input_);
    close_if_open(streams_[0].descriptor);
    close_if_open(streams_[1].descriptor);
}

void child_process::spawn(std::vector<std::string>& command, attachment kind) {
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
        process_ = plan.run(command, true);
        close(terminal);
        input_ = fcntl(controller, F_DUPFD_CLOEXEC, 0);
        streams_[0].descriptor = controller;
        return;
    }
    pipe_ends input = make_pipe();
    pipe_ends output = make_pipe();
    pipe_ends errors = kind == attachment::pipes ? make_pipe() : pipe_ends{};
    plan.place(input.read, 0);
    plan.place(output.write, 1);
    plan.place(kind == attachment::pipes ? errors.write : output.write, 2);
    process_ = plan.run(command, false);
    close(input.read);
    close(output.write);
    close_if_open(errors.write);
    input_ = input.write;
    streams_[0].descriptor = output.read;
    streams_[1].descriptor = errors.read;
}

void child_process::type(std::string_view text) {
    check(write(input_, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "type");
}

void child_process::close_input() {
    close_if_open(input_);
}

void child_process::close_output() {
    close_if_open(streams_[0].descriptor);
}

void child_process::send_signal(int number) {
    check(kill(process_, number) == 0, "kill");
}

std::string child_process::read_until(std::string_view text) {
    return take_until(streams_[0], text);
}

std::string child_process::read_errors_until(std::string_view text) {
    return take_until(streams_[1], text);
}

std::string child_process::read_until(const std::function<bool(const std::string&)>& enough) {
    while (!enough(streams_[0].text)) {
        await("more");
    }
    return std::exchange(streams_[0].text, {});
}

std::string child_process::take_until(stream& from, std::string_view text) {
    std::size_t found = from.text.find(text);
    while (found == std::string::npos) {
        await(text);
        found = from.text.find(text);
    }
    std::string taken = from.text.substr(0, found + text.size());
    from.text.erase(0, taken.size());
    return taken;
}

void child_process::await(std::string_view what) {
    if (!pump()) {
        throw std::runtime_error("waited for \"" + std::string(what) + "\", got \"" + streams_[0].text +
                                 "\" and errors \"" + streams_[1].text + "\"");
    }
}

bool child_process::pump() {
    std::array<pollfd, 2> watched{};
    for (std::size_t i = 0; i < 2; ++i) {
        watched[i] = {streams_[i].descriptor, POLLIN, 0};
    }
    if (streams_[0].descriptor < 0 && streams_[1].descriptor < 0) {
        return false;
    }
    const int ready = poll(watched.data(), watched.size(), patience_ms);
    if (ready <= 0) {
        return ready < 0 && errno == EINTR;
    }
    for (std::size_t i = 0; i < 2; ++i) {
        if (watched[i].revents == 0) {
            continue;
        }
        char buffer[4096];
        const ssize_t size = read(watched[i].fd, buffer, sizeof(buffer));
        if (size > 0) {
            streams_[i].text.append(buffer, static_cast<std::size_t>(size));
        } else {
            // The end of a pipe, or EIO: the last program has left the terminal.
            close_if_open(streams_[i].descriptor);
        }
    }
    return true;
}

std::size_t child_process::threads() const {
    const std::filesystem::directory_iterator tasks("/proc/" + std::to_string(process_) + "/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

void child_process::wait_for_threads(std::size_t count) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience_ms);
    while (threads() != count) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("the program keeps " + std::to_string(threads()) + " threads");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

ending child_process::wait() {
    while (pump()) {
    }
    if (streams_[0].descriptor >= 0 || streams_[1].descriptor >= 0) {
        throw std::runtime_error("the program goes on after: \"" + streams_[0].text + "\"");
    }
    int status = 0;
    while (waitpid(process_, &status, 0) < 0) {
        check(errno == EINTR, "waitpid");
    }
    process_ = -1;
    return WIFSIGNALED(status) ? ending{-1, WTERMSIG(status)} : ending{WEXITSTATUS(status), 0};
}

} // namespace orvanta_test
