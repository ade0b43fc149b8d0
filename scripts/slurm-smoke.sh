#!/usr/bin/env bash
# The cluster workflow on a real one-node Slurm cluster: starts MUNGE, slurmctld and slurmd on
# this machine with a configuration of their own in a temporary directory, submits the array job
# examples/slurm/batch-array.sbatch over a small suite in four shards and examples/slurm/merge.sbatch
# after it (--dependency=afterok), waits for both and checks the merged report. The daemons run as
# root, so this does too (as CI does); slurm-wlm's daemons and MUNGE are installed when missing.
# Whatever way the script ends (failure, timeout, Ctrl-C), the jobs are cancelled, the daemons
# stopped and the directory removed: nothing is left running and nothing is written outside it.
#
#   scripts/slurm-smoke.sh   builds isp-case in build/ (or BUILD_DIR) first
#   ISP_CASE=PATH            the tool to use instead, already built (nothing is built then)
#   SLURM_SMOKE_TIMEOUT      seconds the jobs may take, queueing included (default 180)
#   SLURM_SMOKE_KEEP=1       keep the directory (configuration, logs, reports) for a look
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
build=$(realpath -m "$build")  # the presets run from the project root
job_timeout=${SLURM_SMOKE_TIMEOUT:-180}
shards=4

say() { printf 'slurm-smoke: %s\n' "$*" >&2; }
fail() { say "FAILED: $*"; exit 1; }

[ "$(id -u)" -eq 0 ] || fail "run as root: slurmctld and slurmd run as root here"

if [ -n "${ISP_CASE:-}" ]; then
    "$root/scripts/deps.sh" slurm
    tool=$(realpath "$ISP_CASE")
    [ -x "$tool" ] || fail "ISP_CASE=$ISP_CASE is not an executable"
else
    "$root/scripts/deps.sh" build slurm
    (cd "$root" && cmake --preset native -B "$build") >/dev/null
    cmake --build "$build" --target isp-case -j"$(nproc)" >/dev/null
    tool="$build/tools/isp-case"
fi

# munged refuses a socket under a directory that not everyone may enter
tmp=$(mktemp -d "${TMPDIR:-/tmp}/slurm-smoke.XXXXXX")
chmod 755 "$tmp"
mkdir -m 700 "$tmp/munge"
mkdir -m 755 "$tmp/run"
mkdir "$tmp/state" "$tmp/spool" "$tmp/log" "$tmp/jobs"
export SLURM_CONF="$tmp/slurm.conf"

# Everything this run starts carries the marker in its environment (the daemons, the job steps
# slurmd forks, the jobs themselves), which finds what a killed daemon left behind.
marker="SLURM_SMOKE_RUN=$tmp"
daemon_pids=()
daemon_names=()
interrupted=0

processes_of_this_run() {
    local p
    for p in /proc/[0-9]*; do
        [ "${p#/proc/}" != "$$" ] || continue
        grep -qzxF "$marker" "$p/environ" 2>/dev/null && echo "${p#/proc/}"
    done
    return 0
}

show_logs() {
    local d f
    # a daemon's own log, or what it printed before it had one (a configuration it refused)
    for d in munged slurmctld slurmd; do
        f="$tmp/log/$d.log"
        [ -s "$f" ] || f="$tmp/log/$d.err"
        [ -s "$f" ] || continue
        printf '\n----- %s (last 60 lines)\n' "$d" >&2
        tail -n 60 "$f" >&2
    done
    if [ ${#daemon_pids[@]} -ge 2 ] && kill -0 "${daemon_pids[1]}" 2>/dev/null; then
        printf '\n----- jobs not finished\n' >&2
        timeout 5 squeue -o '%.12i %.16j %.10T %.10M %R' >&2
    fi
    for f in "$tmp"/jobs/*.log; do
        [ -s "$f" ] || continue
        printf '\n----- job output %s (last 60 lines)\n' "${f##*/}" >&2
        tail -n 60 "$f" >&2
    done
}

cleanup() {
    local status=$? left i end
    trap - EXIT INT TERM HUP
    set +e
    if [ "$status" -ne 0 ] && [ "$interrupted" -eq 0 ]; then show_logs; fi
    if [ ${#daemon_pids[@]} -gt 0 ]; then
        # the controller ends the jobs, if it is there to ask
        if [ ${#daemon_pids[@]} -ge 2 ] && kill -0 "${daemon_pids[1]}" 2>/dev/null &&
            timeout 10 scancel --quiet --full --user=root >/dev/null 2>&1; then
            end=$((SECONDS + 10))
            while [ "$SECONDS" -lt "$end" ] && [ -n "$(timeout 5 squeue -h -o %i 2>/dev/null)" ]; do
                sleep 0.5
            done
        fi
        kill -TERM "${daemon_pids[@]}" 2>/dev/null
        for ((i = 0; i < 10; i++)); do
            [ -z "$(jobs -pr)" ] && break
            sleep 0.5
        done
        # job steps and jobs outlive a slurmd that did not end them
        mapfile -t left < <(processes_of_this_run)
        if [ ${#left[@]} -gt 0 ]; then
            say "still running after the daemons, ended: ${left[*]}"
            kill -TERM "${left[@]}" 2>/dev/null
            for ((i = 0; i < 6 && ${#left[@]} > 0; i++)); do
                sleep 0.5
                mapfile -t left < <(processes_of_this_run)
            done
            [ ${#left[@]} -eq 0 ] || kill -KILL "${left[@]}" 2>/dev/null
        fi
        wait 2>/dev/null
    fi
    if [ "${SLURM_SMOKE_KEEP:-0}" = 1 ]; then
        say "kept $tmp"
    else
        rm -rf "$tmp"
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'interrupted=1; say "interrupted"; exit 130' INT
trap 'interrupted=1; say "terminated"; exit 143' TERM HUP

# wait_for SECONDS WHAT COMMAND...: runs COMMAND until it succeeds, at most SECONDS, and fails
# at once when a daemon started so far has ended
wait_for() {
    local limit=$1 what=$2 end i
    shift 2
    end=$((SECONDS + limit))
    until "$@" >/dev/null 2>&1; do
        for i in "${!daemon_pids[@]}"; do
            kill -0 "${daemon_pids[i]}" 2>/dev/null || fail "$what: ${daemon_names[i]} has ended"
        done
        [ "$SECONDS" -lt "$end" ] || fail "$what: not after ${limit} s"
        sleep 0.5
    done
}

# Two ports nothing listens on, from the kernel (the usual 6817/6818 may be taken by a real
# cluster or another run); both sockets are held until both are known, so they differ.
read -r ctld_port slurmd_port < <(python3 -c '
import socket
held = [socket.socket() for _ in range(2)]
for s in held:
    s.bind(("", 0))
print(*(s.getsockname()[1] for s in held))')
[ -n "${slurmd_port:-}" ] || fail "no free port for slurmctld and slurmd"

node=$(hostname -s)
cpus=$(nproc)

head -c 1024 /dev/urandom >"$tmp/munge/munge.key"
chmod 400 "$tmp/munge/munge.key"
env "$marker" munged --foreground --key-file="$tmp/munge/munge.key" \
    --socket="$tmp/run/munge.socket" --pid-file="$tmp/run/munged.pid" \
    --seed-file="$tmp/munge/munged.seed" >"$tmp/log/munged.log" 2>&1 &
daemon_pids+=($!) daemon_names+=(munged)
wait_for 15 "munged answering on $tmp/run/munge.socket" \
    timeout 5 munge --socket="$tmp/run/munge.socket" --no-input

cat >"$SLURM_CONF" <<EOF
ClusterName=smoke
SlurmctldHost=localhost
SlurmctldPort=$ctld_port
SlurmdPort=$slurmd_port
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$tmp/run/munge.socket
StateSaveLocation=$tmp/state
SlurmdSpoolDir=$tmp/spool
SlurmctldPidFile=$tmp/run/slurmctld.pid
SlurmdPidFile=$tmp/run/slurmd.pid
SlurmctldLogFile=$tmp/log/slurmctld.log
SlurmdLogFile=$tmp/log/slurmd.log
# no cgroups in a container: processes tracked through /proc, tasks not bound
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
JobCompType=jobcomp/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
MpiDefault=none
MailProg=/bin/true
ReturnToService=2
# finished jobs stay visible long enough to read their states
MinJobAge=3600
NodeName=$node NodeAddr=127.0.0.1 CPUs=$cpus State=UNKNOWN
PartitionName=smoke Nodes=$node Default=YES MaxTime=INFINITE State=UP
EOF

env "$marker" slurmctld -D -f "$SLURM_CONF" >"$tmp/log/slurmctld.err" 2>&1 &
daemon_pids+=($!) daemon_names+=(slurmctld)
env "$marker" slurmd -D -f "$SLURM_CONF" -N "$node" >"$tmp/log/slurmd.err" 2>&1 &
daemon_pids+=($!) daemon_names+=(slurmd)

controller_up() { [[ $(timeout 5 scontrol ping) == *"is UP"* ]]; }
node_idle() { [ "$(timeout 5 sinfo -h -n "$node" -o %t)" = idle ]; }
wait_for 30 "slurmctld up on port $ctld_port" controller_up
wait_for 30 "node $node idle (slurmd on port $slurmd_port)" node_idle
say "cluster up: slurmctld :$ctld_port, slurmd :$slurmd_port, node $node with $cpus CPUs ($SECONDS s)"

# The suite: copies of the sample case, and one whose register file does not parse, which must
# fail in its shard's report without failing its array task.
suite="$tmp/suite"
for i in 1 2 3 4 5 6 7; do
    mkdir -p "$suite/case-$i"
    cp -r "$root/examples/sample_case/." "$suite/case-$i"
done
cp -r "$root/examples/sample_case" "$suite/broken"
mapfile -t register_files < <(cd "$suite/broken" && find cfgs -name '*.json' | sort)
printf '{ "not": json\n' >"$suite/broken/${register_files[0]}"

cd "$tmp/jobs"
export ISP_CASE="$tool" SUITE="$suite" OUT_DIR="$tmp/results" FRAMES=2
array_id=$(env "$marker" timeout 30 sbatch --parsable --array=1-$shards \
    "$root/examples/slurm/batch-array.sbatch")
array_id=${array_id%%;*}
merge_id=$(env "$marker" timeout 30 sbatch --parsable --dependency=afterok:"$array_id" \
    "$root/examples/slurm/merge.sbatch")
merge_id=${merge_id%%;*}
say "submitted array job $array_id ($shards tasks) and merge job $merge_id after it"

# settled: every job ended, or waits for a dependency that can no longer be met (a merge after
# a failed array task) and would wait for ever
queue_settled() {
    local queue
    queue=$(timeout 5 squeue -h -o '%i %r') || return 1
    ! grep -qv -e ' DependencyNeverSatisfied$' -e '^$' <<<"$queue"
}
wait_for "$job_timeout" "jobs $array_id and $merge_id finished" queue_settled
say "jobs finished ($SECONDS s)"

# JobState and ExitCode of every task of the array, then of the merge job
states=$(timeout 10 scontrol -o show job "$array_id"; timeout 10 scontrol -o show job "$merge_id")
# until the tool has its merge command, the merge job can only be seen to run after the array
has_merge=0
grep -qE '^ +merge ' <<<"$("$tool" --help)" && has_merge=1
[ "$has_merge" = 1 ] || say "isp-case has no merge command: the merged report is not checked"
python3 - "$states" "$array_id" "$merge_id" "$shards" "$tmp/results" "$has_merge" <<'PY' || fail "see above"
import json, re, sys
import xml.etree.ElementTree as ET

states, array_id, merge_id, shards, results, has_merge = sys.argv[1:]
problems = []

jobs = {}
for line in states.splitlines():
    fields = dict(re.findall(r"(\w+)=(\S*)", line))
    key = fields["ArrayTaskId"] if fields.get("ArrayJobId") == array_id else "merge"
    jobs[key] = (fields["JobState"], fields["ExitCode"])
for task in range(1, int(shards) + 1):
    got = jobs.get(str(task))
    if got != ("COMPLETED", "0:0"):
        problems.append(f"array task {task}: {got}, expected COMPLETED with exit code 0:0")
# the broken case fails the suite, so the merge says so with its status
merge_want = ("FAILED", "1:0") if has_merge == "1" else ("FAILED", "2:0")
if jobs.get("merge", ("",))[0] == "PENDING":
    problems.append(f"merge job {merge_id}: never started, an array task did not succeed (afterok)")
elif jobs.get("merge") != merge_want:
    problems.append(f"merge job {merge_id}: {jobs.get('merge')}, expected {merge_want}")

expected = {f"case-{i}" for i in range(1, 8)} | {"broken"}
seen = []
for k in range(1, int(shards) + 1):
    try:
        with open(f"{results}/cases-{k}.json") as f:
            shard = json.load(f)
        cases = [(c["name"], c["result"]) for c in shard["cases"]]
        seen += cases
        junit = [t.get("name") for t in ET.parse(f"{results}/junit-{k}.xml").iter("testcase")]
        if junit != [n for n, _ in cases]:
            problems.append(f"shard {k}: JUnit test cases {junit}, JSON cases {[n for n, _ in cases]}")
    except (OSError, ValueError, KeyError, ET.ParseError) as e:
        problems.append(f"shard {k}: {e}")
names = [n for n, _ in seen]
if sorted(names) != sorted(expected):
    problems.append(f"cases in the shards' reports: {sorted(names)}, expected each of {sorted(expected)} once")
for name, result in seen:
    want = "failed" if name == "broken" else "passed"
    if result != want:
        problems.append(f"case {name}: {result}, expected {want}")

for p in problems:
    print("slurm-smoke: " + p, file=sys.stderr)
sys.exit(1 if problems else 0)
PY
say "passed: $shards shards and the merge as expected ($SECONDS s)"
