// Starts and awaits processes.
#include "child.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

pid_t Start(const std::vector<std::string>& command, int output) {
    std::vector<char*> argv;
    for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
    pid_t child = -1;
    const int error = posix_spawnp(&child, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error == 0) return child;
    fprintf(stderr, "cannot start %s: %s\n", argv[0], strerror(error));
    exit(1);
}

int WaitFor(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace bench
