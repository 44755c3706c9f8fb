#include "core/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "core/libvelmora_settings.h"

namespace velmora {

namespace {

[[noreturn]] void fail(int line, const std::string& path, const std::string& reason) {
    throw Exception("output_file", line, "Cannot write '" + path + "': " + reason + ".");
}

std::string directoryOf(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "it is a directory";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "it is a device";
    if (S_ISFIFO(mode)) return "it is a FIFO";
    if (S_ISSOCK(mode)) return "it is a socket";
    return "it is not a regular file";
}

// Writes all of the text, retrying short writes.
bool writeAll(int fd, const std::string& text) {
    const char* p = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        left -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

std::string output_file_target(const std::string& path) {
    std::string target = path;
    // A chain longer than the system's own limit is left to open() to refuse.
    for (int hops = 0; hops < 40; ++hops) {
        struct stat st;
        if (::lstat(target.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return target;
        char buf[PATH_MAX];
        const ssize_t n = ::readlink(target.c_str(), buf, sizeof buf - 1);
        if (n <= 0) return target;
        const std::string link(buf, static_cast<std::size_t>(n));
        target = link[0] == '/' ? link : directoryOf(target) + "/" + link;
    }
    return target;
}

std::string output_file_problem(const std::string& path, const std::vector<std::string>& inputs) {
    const std::string target = output_file_target(path);
    struct stat st;
    if (::stat(target.c_str(), &st) == 0) {
        if (!S_ISREG(st.st_mode)) return kindOf(st.st_mode);
        for (const std::string& input : inputs) {
            struct stat in;
            if (::stat(input.c_str(), &in) == 0 && in.st_dev == st.st_dev && in.st_ino == st.st_ino)
                return "it is the input '" + input + "'";
        }
        if (::access(target.c_str(), W_OK) != 0) return std::strerror(errno);
    } else if (errno != ENOENT) {
        return std::strerror(errno);
    }
    // The file is written beside its target and renamed onto it.
    if (::access(directoryOf(target).c_str(), W_OK | X_OK) != 0) return std::strerror(errno);
    return "";
}

void write_file_atomically(const std::string& path, const std::string& content,
                           const std::function<void(const std::string&)>& check) {
    const std::string problem = output_file_problem(path, {});
    if (!problem.empty()) fail(__LINE__, path, problem);
    const std::string target = output_file_target(path);
    std::string tmp = target + ".partXXXXXX";
    const int fd = ::mkstemp(&tmp[0]);
    if (fd < 0) fail(__LINE__, path, std::strerror(errno));
    struct stat old;
    // The new file keeps the old one's permissions; a new one gets the
    // usual ones for a file a user creates.
    if (::stat(target.c_str(), &old) == 0) {
        ::fchmod(fd, old.st_mode & 07777);
    } else {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        ::fchmod(fd, 0666 & ~mask);
    }
    const bool written = writeAll(fd, content) && ::fsync(fd) == 0;
    const int error = errno;
    if (::close(fd) != 0 || !written) {
        ::unlink(tmp.c_str());
        fail(__LINE__, path, std::strerror(written ? errno : error));
    }
    try {
        if (check) check(tmp);
    } catch (...) {
        ::unlink(tmp.c_str());
        throw;
    }
    if (std::rename(tmp.c_str(), target.c_str()) != 0) {
        const int renameError = errno;
        ::unlink(tmp.c_str());
        fail(__LINE__, path, std::strerror(renameError));
    }
}

}  // namespace velmora
