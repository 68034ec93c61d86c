// Replacing a file's content on Linux: write, fsync, rename, fsync of the folder.
#include "shared/durable_file.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <unistd.h>

namespace vantu::orvanta {
namespace {

std::string failure(std::string_view step, const std::string& path, int error) {
    return formatted("cannot {} {}: {}", step, path, strerrordesc_np(error));
}

bool write_all(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

// Makes the rename itself last. A folder that cannot be opened for that keeps it all the same, later.
void flush_folder_of(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

} // namespace

std::string replace_file(const std::string& path, const std::string& content) {
    const std::string temporary = path + ".new";
    const int descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return failure("create", temporary, errno);
    }
    const bool written = write_all(descriptor, content) && ::fsync(descriptor) == 0;
    const int write_error = errno;
    ::close(descriptor);
    if (!written) {
        ::unlink(temporary.c_str());
        return failure("write", temporary, write_error);
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int rename_error = errno;
        ::unlink(temporary.c_str());
        return failure("replace", path, rename_error);
    }
    flush_folder_of(path);
    return {};
}

} // namespace vantu::orvanta
