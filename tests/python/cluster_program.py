# SPDX-License-Identifier: Apache-2.0
"""A sweep on a scheduler and two worker processes, one of which is killed in its midst."""

import os
import signal
import threading
import time

import policymaptest as pmt
from distributed import Client, LocalCluster

POLICY = """ip access-list web
  10 permit tcp any any eq 80
class-map match-any web
  match access-group web
policy-map edge
  class web
    set action1 7
interface Ethernet1
  service-policy input edge"""


def slowly(lab):
    time.sleep(0.005)
    lab.load(POLICY)


def main():
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, \
            Client(cluster) as client:
        victim = sorted(client.run(os.getpid).values())[0]

        def kill():
            time.sleep(1)
            os.kill(victim, signal.SIGKILL)
            print("killed", flush=True)

        killer = threading.Thread(target=kill)
        killer.start()
        report = pmt.sweep(slowly, client=client, shards=8, progress=False)
        killer.join()
    alone = pmt.sweep(slowly, progress=False)
    assert report.results == alone.results, (report, alone)
    print("same results:", len(report.results))


if __name__ == "__main__":
    main()
