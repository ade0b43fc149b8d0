#!/bin/sh
# Runs one target executable under qemu-user with the target's loader and libraries. Core dumps
# are off: a target that dies of a signal (the death tests do, on purpose) would otherwise leave
# a core file of the emulated process in the test's working directory.
ulimit -c 0
exec qemu-arm -L "${ISP_TARGET_SYSROOT:-/usr/arm-linux-gnueabihf}" "$@"
