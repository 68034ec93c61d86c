// A program under test on Windows: CreateProcess and pipes.
#include "app/support/spawned_program.hpp"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <windows.h>

#include <tlhelp32.h>

namespace orvanta_tests {
namespace {

constexpr int code_of_abort = 3;
constexpr int code_of_kill = 9;

void check(bool succeeded, const char* what) {
    if (!succeeded) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
    }
}

class owned_handle {
  public:
    owned_handle() = default;
    explicit owned_handle(HANDLE handle) : handle_(handle) {}
    ~owned_handle() { close(); }
    owned_handle(owned_handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    owned_handle& operator=(owned_handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }

    [[nodiscard]] HANDLE get() const { return handle_; }
    [[nodiscard]] bool is_open() const { return handle_ != nullptr; }
    void close() {
        if (handle_ != nullptr) {
            CloseHandle(std::exchange(handle_, nullptr));
        }
    }

  private:
    HANDLE handle_{nullptr};
};

// The child's end of a pipe goes to the child, the other stays here.
struct child_pipe {
    owned_handle child;
    owned_handle own;
};

child_pipe make_pipe(bool child_reads) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    check(CreatePipe(&read, &write, &inherited, 0) != 0, "CreatePipe");
    child_pipe made{owned_handle(child_reads ? read : write), owned_handle(child_reads ? write : read)};
    check(SetHandleInformation(made.own.get(), HANDLE_FLAG_INHERIT, 0) != 0, "SetHandleInformation");
    return made;
}

// The words as the C library takes a command line apart. None of them ends in a backslash or has a quote.
std::string command_line(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line.append(line.empty() ? "\"" : " \"").append(word).append("\"");
    }
    return line;
}

} // namespace

const ending aborted{code_of_abort, 0};
const ending killed{code_of_kill, 0};

struct spawned_program::system_side {
    struct stream {
        owned_handle pipe;
        bool has_return{false}; // one that waits for its line feed

        // CR LF becomes LF; a line feed alone is told.
        void append(std::string& text, std::string_view piece) {
            for (const char letter : piece) {
                if (letter == '\n' && !has_return) {
                    text += "[LF alone]";
                }
                if (letter != '\n' && has_return) {
                    text += '\r';
                }
                has_return = letter == '\r';
                if (!has_return) {
                    text += letter;
                }
            }
        }

        // Takes what waits; false when nothing does.
        bool take(std::string& text) {
            if (!pipe.is_open()) {
                return false;
            }
            std::array<char, 4096> piece{};
            DWORD size = 0;
            if (PeekNamedPipe(pipe.get(), nullptr, 0, nullptr, &size, nullptr) != 0 && size == 0) {
                return false;
            }
            if (size == 0 ||
                ReadFile(pipe.get(), piece.data(), static_cast<DWORD>(piece.size()), &size, nullptr) == 0) {
                pipe.close();
            } else {
                append(text, {piece.data(), size});
            }
            return true;
        }
    };

    owned_handle process;
    DWORD id{0};
    owned_handle input;
    std::array<stream, 2> streams;
};

spawned_program::spawned_program(const std::vector<std::string>& command, attachment kind)
    : system_(std::make_unique<system_side>()) {
    child_pipe input = make_pipe(true);
    child_pipe output = make_pipe(false);
    child_pipe errors = kind == attachment::pipes ? make_pipe(false) : child_pipe{};
    STARTUPINFOA start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.child.get();
    start.hStdOutput = output.child.get();
    start.hStdError = kind == attachment::pipes ? errors.child.get() : output.child.get();
    PROCESS_INFORMATION made{};
    std::string line = command_line(command);
    check(CreateProcessA(command.front().c_str(), line.data(), nullptr, nullptr, TRUE,
                         CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &start, &made) != 0,
          command.front().c_str());
    CloseHandle(made.hThread);
    system_->process = owned_handle(made.hProcess);
    system_->id = made.dwProcessId;
    system_->input = std::move(input.own);
    system_->streams[0].pipe = std::move(output.own);
    system_->streams[1].pipe = std::move(errors.own);
}

spawned_program::~spawned_program() {
    TerminateProcess(system_->process.get(), code_of_kill);
    WaitForSingleObject(system_->process.get(), INFINITE);
}

void spawned_program::type(std::string_view text) {
    DWORD written = 0;
    check(WriteFile(system_->input.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) !=
                  0 &&
              written == text.size(),
          "type");
}

void spawned_program::close_input() {
    system_->input.close();
}

void spawned_program::close_output() {
    system_->streams[0].pipe.close();
}

void spawned_program::interrupt() {
    check(GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, system_->id) != 0, "interrupt");
}

void spawned_program::terminate() {
    interrupt();
}

void spawned_program::kill() {
    check(TerminateProcess(system_->process.get(), code_of_kill) != 0, "kill");
}

void spawned_program::suspend() {
    throw std::logic_error("a program cannot be suspended here");
}

bool spawned_program::is_open() const {
    return system_->streams[0].pipe.is_open() || system_->streams[1].pipe.is_open();
}

// A pipe cannot be waited for.
bool spawned_program::read(std::array<std::string, 2>& printed) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience_ms);
    while (is_open() && std::chrono::steady_clock::now() < deadline) {
        const bool output = system_->streams[0].take(printed[0]);
        const bool errors = system_->streams[1].take(printed[1]);
        if (output || errors) {
            return true;
        }
        Sleep(1);
    }
    return false;
}

std::uint64_t spawned_program::id() const {
    return system_->id;
}

std::size_t spawned_program::threads() const {
    const owned_handle list(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL more = Thread32First(list.get(), &entry); more != 0; more = Thread32Next(list.get(), &entry)) {
        count += entry.th32OwnerProcessID == system_->id ? 1U : 0U;
    }
    return count;
}

ending spawned_program::wait() {
    check(WaitForSingleObject(system_->process.get(), patience_ms) == WAIT_OBJECT_0, "wait");
    DWORD code = 0;
    check(GetExitCodeProcess(system_->process.get(), &code) != 0, "GetExitCodeProcess");
    return {static_cast<int>(code), 0};
}

} // namespace orvanta_tests
