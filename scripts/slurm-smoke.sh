#!/usr/bin/env bash
# The cluster workflow on a real one-node Slurm cluster: starts MUNGE, slurmctld and slurmd on
# this machine with a configuration of their own in a temporary directory, submits the array job
# examples/slurm/batch-array.sbatch over a small suite with a baseline in four shards and
# examples/slurm/merge.sbatch after it (--dependency=afterok), waits for both and checks the
# merged report. The daemons run as root, so this does too (as CI does); slurm-wlm's daemons and
# MUNGE are installed when missing.
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

# Everything this run starts carries the marker in its environment (the daemons, the job steps
# slurmd forks, the jobs themselves), which finds what a killed daemon left behind. The daemons
# run in sessions of their own: a Ctrl-C reaches this script, which then stops them in order.
tmp=""
marker=""
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
    if [ -n "$tmp" ] && [ "$status" -ne 0 ] && [ "$interrupted" -eq 0 ]; then show_logs; fi
    if [ ${#daemon_pids[@]} -gt 0 ]; then
        # the controller ends the jobs, if it is there to ask
        if [ ${#daemon_pids[@]} -ge 2 ] && kill -0 "${daemon_pids[1]}" 2>/dev/null &&
            timeout 5 scancel --quiet --full --user=root >/dev/null 2>&1; then
            end=$((SECONDS + 10))
            while [ "$SECONDS" -lt "$end" ] && [ -n "$(timeout 5 squeue -h -o %i 2>/dev/null)" ]; do
                sleep 0.5
            done
        fi
        kill -TERM "${daemon_pids[@]}" 2>/dev/null
        for ((i = 0; i < 10; i++)); do
            kill -0 "${daemon_pids[@]}" 2>/dev/null || break
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
    if [ -n "$tmp" ]; then
        if [ "${SLURM_SMOKE_KEEP:-0}" = 1 ]; then say "kept $tmp"; else rm -rf "$tmp"; fi
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'interrupted=1; say "interrupted"; exit 130' INT
trap 'interrupted=1; say "terminated"; exit 143' TERM HUP

if [ -n "${ISP_CASE:-}" ]; then
    "$root/scripts/deps.sh" slurm
    tool=$(realpath -e "$ISP_CASE" 2>/dev/null) || tool=""
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
marker="SLURM_SMOKE_RUN=$tmp"

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

# The suite: copies of the sample case with a baseline saved from them; then, as a new build
# would meet them, one case programs one value differently in frame 1 (in every partition, as
# the module reads one) and one case has a register file that does not parse. Each must fail in
# its shard's report, naming why, without failing its array task.
suite="$tmp/suite"
mkdir "$suite"
for name in case-1 case-2 case-3 case-4 case-5 case-6 changed broken; do
    cp -r "$root/examples/sample_case" "$suite/$name"
done
timeout 300 "$tool" batch "$suite" --frames 2 --save-baseline "$tmp/baseline" \
    >"$tmp/log/save-baseline.log" 2>&1 ||
    { cat "$tmp/log/save-baseline.log" >&2; fail "saving the baseline of the suite failed"; }
python3 - "$suite/changed/cfgs/f1" <<'PY' || fail "cannot change the gamma table of $suite/changed"
import glob, json, sys
for path in glob.glob(sys.argv[1] + "/rtl_gamma_p*.json"):
    with open(path) as f:
        doc = json.load(f)
    doc["isp_gamma"]["grp0"][0]["gam_lut"]["high"] += 1
    with open(path, "w") as f:
        json.dump(doc, f, indent=1)
PY
mapfile -t register_files < <(cd "$suite/broken" && find cfgs -name '*.json' | sort)
printf '{ "not": json\n' >"$suite/broken/${register_files[0]}"

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
setsid env "$marker" munged --foreground --key-file="$tmp/munge/munge.key" \
    --socket="$tmp/run/munge.socket" --pid-file="$tmp/run/munged.pid" \
    --seed-file="$tmp/munge/munged.seed" >"$tmp/log/munged.log" 2>&1 &
daemon_pids+=($!) daemon_names+=(munged)
wait_for 15 "munged answering on $tmp/run/munge.socket" \
    timeout 5 munge --socket="$tmp/run/munge.socket" --no-input

cat >"$SLURM_CONF" <<EOF
ClusterName=smoke
# addresses given, not looked up: a container's hosts file may lack the name or map it to IPv6
SlurmctldHost=localhost(127.0.0.1)
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

setsid env "$marker" slurmctld -D -f "$SLURM_CONF" >"$tmp/log/slurmctld.err" 2>&1 &
daemon_pids+=($!) daemon_names+=(slurmctld)
setsid env "$marker" slurmd -D -f "$SLURM_CONF" -N "$node" >"$tmp/log/slurmd.err" 2>&1 &
daemon_pids+=($!) daemon_names+=(slurmd)

controller_up() { [[ $(timeout 5 scontrol ping) == *"is UP"* ]]; }
node_idle() { [ "$(timeout 5 sinfo -h -n "$node" -o %t)" = idle ]; }
wait_for 30 "slurmctld up on port $ctld_port" controller_up
wait_for 30 "node $node idle (slurmd on port $slurmd_port)" node_idle
say "cluster up: slurmctld :$ctld_port, slurmd :$slurmd_port, node $node with $cpus CPUs ($SECONDS s)"

cd "$tmp/jobs"
export ISP_CASE="$tool" SUITE="$suite" OUT_DIR="$tmp/results" BASELINE="$tmp/baseline" FRAMES=2
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
python3 - "$states" "$array_id" "$merge_id" "$shards" "$tmp/results" <<'PY' || fail "see above"
import json, re, sys
import xml.etree.ElementTree as ET

states, array_id, merge_id, shards, results = sys.argv[1:]
shards = int(shards)
problems = []

jobs = {}
for line in states.splitlines():
    fields = dict(re.findall(r"(\w+)=(\S*)", line))
    key = fields["ArrayTaskId"] if fields.get("ArrayJobId") == array_id else "merge"
    jobs[key] = (fields["JobState"], fields["ExitCode"])
for task in range(1, shards + 1):
    got = jobs.get(str(task))
    if got != ("COMPLETED", "0:0"):
        problems.append(f"array task {task}: {got}, expected COMPLETED with exit code 0:0")
# the failing cases fail the suite, which the merge says with its status
if jobs.get("merge", ("",))[0] == "PENDING":
    problems.append(f"merge job {merge_id}: never started, an array task did not succeed (afterok)")
elif jobs.get("merge") != ("FAILED", "1:0"):
    problems.append(f"merge job {merge_id}: {jobs.get('merge')}, expected FAILED with exit code 1:0")

expected = sorted([f"case-{i}" for i in range(1, 7)] + ["changed", "broken"])
def want(name):
    return "failed" if name in ("changed", "broken") else "passed"
# why each failing case failed: the first divergence by its register path, the file that
# does not parse
reasons = {"changed": ("baseline: frame 1 (f1)", "isp_gamma.grp0[0].gam_lut.high"),
           "broken": ("check: 1 error", "JSON does not parse")}

def read(path, parse):
    try:
        with open(path, "rb") as f:
            return parse(f)
    except (OSError, ValueError, ET.ParseError) as e:
        problems.append(f"{path}: {e}")

# each shard's report, and the shard each case ran in
shard_of = {}
for k in range(1, shards + 1):
    shard = read(f"{results}/cases-{k}.json", json.load) or {"cases": []}
    names = [c.get("name") for c in shard["cases"]]
    for name in names:
        if name in shard_of:
            problems.append(f"case {name} in shard {shard_of[name]} and shard {k}")
        shard_of[name] = k
    junit = read(f"{results}/junit-{k}.xml", ET.parse)
    if junit and [t.get("name") for t in junit.iter("testcase")] != names:
        problems.append(f"shard {k}: its JUnit test cases are not its JSON cases {names}")
if sorted(shard_of) != expected:
    problems.append(f"cases in the shards' reports: {sorted(shard_of)}, expected {expected}")

merged = read(f"{results}/merged.json", json.load)
if merged:
    cases = {c["name"]: c for c in merged.get("cases", [])}
    if sorted(cases) != expected or len(merged["cases"]) != len(expected):
        problems.append(f"merged cases: {[c['name'] for c in merged.get('cases', [])]}, expected each of {expected} once")
    for name, c in cases.items():
        if (c.get("result"), c.get("shard")) != (want(name), shard_of.get(name)):
            problems.append(f"merged case {name}: {c.get('result')} in shard {c.get('shard')}, "
                            f"expected {want(name)} in shard {shard_of.get(name)}")
    for name, parts in reasons.items():
        reason = cases.get(name, {}).get("reason", "")
        if not all(part in reason for part in parts):
            problems.append(f"merged case {name}: reason {reason!r}, expected to hold {parts}")
    if sorted(s.get("index") for s in merged.get("shards", [])) != list(range(1, shards + 1)):
        problems.append(f"merged shards: {merged.get('shards')}, expected 1 to {shards}")
    if merged.get("missing_shards") or merged.get("missing_cases"):
        problems.append(f"merged report misses shards {merged.get('missing_shards')}, cases {merged.get('missing_cases')}")
    summary = {k: merged.get("summary", {}).get(k) for k in ("cases", "passed", "failed", "missing", "result", "exit_status")}
    if summary != {"cases": 8, "passed": 6, "failed": 2, "missing": 0, "result": "failed", "exit_status": 1}:
        problems.append(f"merged summary: {summary}")

junit = read(f"{results}/junit.xml", ET.parse)
if junit:
    tests = {t.get("name"): t.find("failure") is not None for t in junit.iter("testcase")}
    if tests != {name: want(name) == "failed" for name in expected}:
        problems.append(f"merged JUnit (test case: failed): {tests}, expected {expected} with changed and broken failed")

for p in problems:
    print("slurm-smoke: " + p, file=sys.stderr)
sys.exit(1 if problems else 0)
PY
say "passed: $shards shards and their merge as expected ($SECONDS s)"
