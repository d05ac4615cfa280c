#ifndef PRIVATENETWORK_H
#define PRIVATENETWORK_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>

// Tests that send datagrams or connect beyond loopback run only in the
// private network namespace of scripts/private-network.sh, which nothing
// sent can leave. Whether this is it is told by what the namespace holds
// (tessera_in_private_network in scripts/common.sh, which the scripts use
// too), never by a variable; it is asked before the test opens any socket.
inline bool InPrivateNetwork()
{
    char bash[] = "bash";
    char command[] = "-c";
    char check[] = "source \"$1\" && tessera_in_private_network";
    char script[] = TESSERA_SOURCE_DIR "/scripts/common.sh";
    char* arguments[] = {bash, command, check, bash, script, nullptr};
    extern char** environ;
    pid_t child = 0;
    int status = 0;
    return posix_spawnp(&child, bash, nullptr, nullptr, arguments, environ) == 0
        && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Ends the program with status 1, saying how to run it, outside the private
// network. A test class calls it from its static initMain(), which Qt Test
// runs first thing in main.
inline void RequirePrivateNetwork()
{
    if (!InPrivateNetwork())
    {
        std::fprintf(stderr,
            "%s: refused: it sends datagrams or connects beyond loopback, and this is not\n"
            "the private network namespace (loopback and tessera0/tessera1 only). Run the\n"
            "tests with: bash scripts/test.sh\n"
            "or inside the namespace: bash scripts/private-network.sh ctest --test-dir BUILD_DIR\n",
            program_invocation_short_name);
        std::exit(1);
    }
}

#endif
