// Runs a test program that needs the service's fixed ports: in a network namespace of its own where the
// system allows one, else under a lock that lets one such program run at a time.
//
// usage: network_namespace_launcher PROGRAM [ARGUMENT...]

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <string>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[nodiscard]] bool write_text(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return written;
}

[[nodiscard]] bool bring_loopback_up() {
    const int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (control < 0) {
        return false;
    }
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    bool up = ioctl(control, SIOCGIFFLAGS, &request) == 0;
    if (up) {
        request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP | IFF_RUNNING);
        up = ioctl(control, SIOCSIFFLAGS, &request) == 0;
    }
    close(control);
    return up;
}

// The user keeps its own id inside, so that files and permissions look as they do outside.
[[nodiscard]] bool enter_user_and_network_namespace() {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    return unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0 && write_text("/proc/self/setgroups", "deny") &&
           write_text("/proc/self/uid_map", user + " " + user + " 1") &&
           write_text("/proc/self/gid_map", group + " " + group + " 1") && bring_loopback_up();
}

[[nodiscard]] bool enter_network_namespace() {
    return unshare(CLONE_NEWNET) == 0 && bring_loopback_up();
}

// Half an entry cannot be undone, so a child tries first.
[[nodiscard]] bool works_in_a_child(bool (*enter)()) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(enter() ? 0 : 1);
    }
    int status = 1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The descriptor is left open on purpose: the program inherits it and holds the lock to its end.
[[nodiscard]] bool take_turn() {
    const char* folder = std::getenv("TMPDIR");
    const std::string path =
        std::string(folder != nullptr ? folder : "/tmp") + "/vantu_orvanta_fixed_ports.lock";
    int file = open(path.c_str(), O_RDONLY);
    if (file < 0) {
        file = open(path.c_str(), O_RDONLY | O_CREAT, 0644);
    }
    if (file < 0) {
        std::fprintf(stderr, "cannot open %s: %s\n", path.c_str(), std::strerror(errno));
        return false;
    }
    int locked = flock(file, LOCK_EX);
    while (locked < 0 && errno == EINTR) {
        locked = flock(file, LOCK_EX);
    }
    return locked == 0;
}

[[nodiscard]] bool separate() {
    if (std::getenv("ORVANTA_TEST_NO_NAMESPACE") == nullptr) {
        for (const auto enter : {enter_user_and_network_namespace, enter_network_namespace}) {
            if (works_in_a_child(enter)) {
                return enter();
            }
        }
    }
    return take_turn();
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "usage: %s PROGRAM [ARGUMENT...]\n", arguments[0]);
        return 2;
    }
    if (!separate()) {
        std::fprintf(stderr, "cannot give %s the fixed ports for itself\n", arguments[1]);
        return 1;
    }
    execvp(arguments[1], arguments + 1);
    std::fprintf(stderr, "cannot run %s: %s\n", arguments[1], std::strerror(errno));
    return 127;
}
