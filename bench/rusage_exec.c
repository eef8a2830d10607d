/* Runs a command and writes what it used into a file: "<status> <user s> <sys s> <peak KB>".
 *
 *     rusage_exec RESULT_FILE PROGRAM [ARG...]
 *
 * The benchmark driver starts vesk through this small program: the peak resident size that the
 * kernel reports for a child counts the memory of the process that forked it, as it was up to the
 * exec, so a child forked by the driver itself would show the driver's own peak when that is the
 * larger. Status: the exit code, or minus the signal number. Standard streams are inherited. */
#define _GNU_SOURCE
#include <errno.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc < 3)
        return 125;
    pid_t pid = fork();
    if (pid < 0)
        return 126;
    if (pid == 0) {
        execv(argv[2], argv + 2);
        _exit(127);
    }
    int st = 0;
    struct rusage ru;
    while (wait4(pid, &st, 0, &ru) < 0) {
        if (errno != EINTR)
            return 126;
    }
    FILE* f = fopen(argv[1], "w");
    if (!f)
        return 126;
    int status = WIFEXITED(st) ? WEXITSTATUS(st) : (WIFSIGNALED(st) ? -WTERMSIG(st) : -1);
    fprintf(f, "%d %ld.%06ld %ld.%06ld %ld\n", status, (long)ru.ru_utime.tv_sec, (long)ru.ru_utime.tv_usec,
            (long)ru.ru_stime.tv_sec, (long)ru.ru_stime.tv_usec, ru.ru_maxrss);
    fclose(f);
    return 0;
}
