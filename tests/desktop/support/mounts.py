"""Standing in for files of the machine: prefixes for start_messenger, by which the program alone sees
other files, file systems or a whole other tree. Nothing of the machine itself changes."""

import os

# Anybody may do so in a user namespace of their own; root needs none, and has to stay root.
UNSHARE = ["unshare", "--mount"] if os.geteuid() == 0 else [
    "unshare", "--user", "--map-current-user", "--keep-caps", "--mount"]


def with_mounts(script, *arguments):
    """The program behind a shell script that mounts things, with the arguments as $1 and so on."""
    return [*UNSHARE, "sh", "-ec", f'{script}\nfor last; do :; done\nexec "$last"', "sh",
            *(str(argument) for argument in arguments)]


def with_new_file(file, path, room):
    """The program sees `file` at `path`, where there is nothing; its first folder must not exist either.
    The empty folder `room` becomes the root of a tree that is the machine's but for that."""
    return with_mounts('''
        mount -t tmpfs none "$3"
        for entry in /*; do
            if [ -L "$entry" ]; then cp -P "$entry" "$3"
            elif [ -d "$entry" ]; then mkdir "$3$entry"; mount --rbind "$entry" "$3$entry"
            fi
        done
        mkdir -p "$3$(dirname "$2")"
        : >"$3$2"
        mount --bind "$1" "$3$2"
        set -- chroot "$3" "$4"
        exec "$@"''', file, path, room)
