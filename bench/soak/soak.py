#!/usr/bin/env python3
"""Fault soak: every fault of the virtual tracker against read, write, telemetry and flash of tavrel-cli.

Each run starts a fresh tavrel-devsim on a pseudo-terminal from a known --state file, runs one command and
then compares what the device holds (its --state file, or its boot loader's report) with what the tool
said. The table counts exit codes and outcomes per fault and command:
  agree   the tool exited 0 and the device holds what it reported (the only acceptable success)
  LIE     the tool exited 0 but the device differs: a wrong success, the one outcome that must never occur
  failed  the tool exited non-zero (a fault it could not ride out), the device may hold part of a write
  hung    the tool did not end within its own deadline and a margin, or died of a signal
Usage: bench/soak/soak.py BUILD-DIR [--runs N] [--budget SECONDS-PER-CELL]
"""
import argparse
import json
import os
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
DATA = os.path.join(ROOT, 'tests', 'data', 'cli')
TIMEOUT_S = 8

FAULTS = [
    ('none', []),
    ('silent-every 3', ['--silent-every', '3']),
    ('truncate-every 3', ['--truncate-every', '3']),
    ('garbage-every 3', ['--garbage-every', '3']),
    ('split', ['--split']),
    ('latency 40', ['--latency', '40']),
    ('baud 115200', ['--baud', '115200']),
    ('hangup-after 8', ['--hangup-after', '8']),
    ('corrupt-every 5', ['--corrupt-every', '5']),
    ('ignore-writes System', ['--ignore-writes', 'SystemConfiguration']),
    ('silent-section Nav', ['--silent-section', 'NavConfiguration']),
    ('drop-requests-every 4', ['--drop-requests-every', '4']),
]
COMMANDS = ['read', 'write', 'telemetry', 'flash']


def load(path):
    try:
        with open(path, encoding='utf-8') as f:
            return json.load(f)
    except (OSError, ValueError):
        return None


def transferable(root, with_fault_speed):
    """The sections that go to the device and come back unchanged (the file reader keeps its gaps)."""
    if not isinstance(root, dict):
        return None
    nav = dict(root.get('navigation', {}))
    if not with_fault_speed:
        nav.pop('faultSpeed', None)
    gsm = root.get('gsm', [])
    out = {'navigation': nav,
           'gprs': [g.get('gprs %d' % (i + 1)) for i, g in enumerate(gsm)],
           'fuel_tanks': root.get('fuel_tanks', [])[:5]}
    for key in ('SystemParameters', 'Server', 'adcs', 'dinputs', 'fuel_sensors'):
        out[key] = root.get(key)
    return out


def firmware_image(path, pages=512):
    head = b'BOOT2FILE\0' + b'\0\0' + struct.pack('<HHHHBBHH', pages, 520, 918, 9, 0, 3, 1, 1)
    head += struct.pack('<HHH', 17, 0x1203, 0xBEEF)
    body = head + b'\xff' * (520 - len(head))
    for n in range(pages):
        body += bytes(((n * 7 + i) & 0xFF) for i in range(520))
    with open(path, 'wb') as f:
        f.write(body)


def run_measured(args, limit_s, out_path, err_path):
    """Runs args; returns (exit code or None when hung/killed by a signal, peak resident KiB).

    The peak is the process's own high-water mark (VmHWM), read while it runs: the rusage of a child
    forked from this script would count the script's memory from before the exec."""
    with open(out_path, 'wb') as out, open(err_path, 'wb') as err:
        p = subprocess.Popen(args, stdout=out, stderr=err, stdin=subprocess.DEVNULL)
    peak = [0]
    done = threading.Event()

    def watch():
        while not done.is_set():
            try:
                with open('/proc/%d/status' % p.pid) as f:
                    for line in f:
                        if line.startswith('VmHWM:'):
                            peak[0] = max(peak[0], int(line.split()[1]))
            except OSError:
                pass
            done.wait(0.02)

    watcher = threading.Thread(target=watch)
    watcher.start()
    try:
        p.wait(limit_s)
    except subprocess.TimeoutExpired:
        p.kill()
        p.wait()
    done.set()
    watcher.join()
    code = p.returncode if p.returncode >= 0 else None
    return code, peak[0]


class Devsim:
    def __init__(self, binary, state, faults, log):
        self.log = open(log, 'wb')
        self.p = subprocess.Popen([binary, '--pty', '--state', state] + faults, stdout=subprocess.PIPE,
                                  stderr=self.log, stdin=subprocess.DEVNULL)
        self.port = self.p.stdout.readline().decode().strip()

    def stop(self):
        if self.p.poll() is None:
            self.p.send_signal(signal.SIGTERM)
            try:
                self.p.wait(5)
            except subprocess.TimeoutExpired:
                self.p.kill()
                self.p.wait()
        self.p.stdout.close()
        self.log.close()


def one_run(build, work, fault, command, image):
    cli = os.path.join(build, 'cli', 'tavrel-cli')
    devsim = os.path.join(build, 'tools', 'devsim', 'tavrel-devsim')
    state = os.path.join(work, 'state.json')
    shutil.copy(os.path.join(DATA, 'device-state.json'), state)
    os.chmod(state, 0o600)
    before = transferable(load(state), True)
    sim_log = os.path.join(work, 'devsim.log')
    sim = Devsim(devsim, state, fault, sim_log)
    if not sim.port:
        sim.stop()
        return 'nosim', None, 0
    out_file = os.path.join(work, 'read.json')
    if os.path.exists(out_file):
        os.remove(out_file)
    source = os.path.join(DATA, 'write-config.json')
    args = {'read': ['read', '-o', out_file], 'write': ['write', source],
            'telemetry': ['telemetry', '--once'], 'flash': ['flash', image]}[command]
    deadline = TIMEOUT_S if command != 'flash' else 30
    code, rss = run_measured([cli, '--port', sim.port, '--timeout', str(deadline)] + args, deadline + 15,
                             os.path.join(work, 'out.txt'), os.path.join(work, 'err.txt'))
    sim.stop()
    after = load(state)
    if command == 'read':
        agrees = transferable(load(out_file), True) == transferable(after, True)
    elif command == 'write':
        agrees = transferable(after, False) == transferable(load(source), False)
    elif command == 'telemetry':
        with open(os.path.join(work, 'out.txt'), encoding='utf-8', errors='replace') as f:
            agrees = bool(f.read().strip()) and transferable(after, True) == before
    else:
        with open(sim_log, encoding='utf-8', errors='replace') as f:
            agrees = 'firmware written' in f.read()
    if code is None:
        outcome = 'hung'
    elif code == 0:
        outcome = 'agree' if agrees else 'LIE'
    else:
        outcome = 'failed'
    return outcome, code, rss


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('build')
    parser.add_argument('--runs', type=int, default=3)
    parser.add_argument('--budget', type=float, default=15.0, help='seconds a fault/command cell may use')
    a = parser.parse_args()
    build = os.path.abspath(a.build)
    devsim_help = subprocess.run([os.path.join(build, 'tools', 'devsim', 'tavrel-devsim'), '--help'],
                                 capture_output=True, text=True).stdout
    work = tempfile.mkdtemp(prefix='tavrel-soak-')
    image = os.path.join(work, 'soak.bsk')
    firmware_image(image)
    lies = 0
    started = time.time()
    print('%-22s %-9s %4s  %-24s %-30s %8s' % ('fault', 'command', 'runs', 'exit codes', 'outcomes',
                                             'peak MB'))
    for name, fault in FAULTS:
        if fault and fault[0] not in devsim_help:
            print('%-22s (not an option of this tavrel-devsim)' % name)
            continue
        for command in COMMANDS:
            codes, outcomes, peak, runs = {}, {}, 0, 0
            cell_start = time.time()
            while runs < a.runs and (runs == 0 or time.time() - cell_start < a.budget):
                outcome, code, rss = one_run(build, work, fault, command, image)
                runs += 1
                key = 'hung' if code is None else str(code)
                codes[key] = codes.get(key, 0) + 1
                outcomes[outcome] = outcomes.get(outcome, 0) + 1
                peak = max(peak, rss)
                lies += outcome == 'LIE'
            print('%-22s %-9s %4d  %-24s %-30s %8.1f' % (
                name, command, runs, ' '.join('%s×%d' % kv for kv in sorted(codes.items())),
                ' '.join('%s×%d' % kv for kv in sorted(outcomes.items())), peak / 1024.0), flush=True)
    shutil.rmtree(work, ignore_errors=True)
    print('%d wrong successes; %.0f s' % (lies, time.time() - started))
    return 1 if lies else 0


if __name__ == '__main__':
    sys.exit(main())
