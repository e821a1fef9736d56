# SPDX-License-Identifier: Apache-2.0
"""A sweep on a cluster; here it is two processes on this machine."""

from policies import EDGE, EDIT
import policymaptest
import pytest

distributed = pytest.importorskip("distributed", reason="needs python3-distributed")


@pytest.mark.filterwarnings("ignore")  # of the cluster's own libraries
def test_a_cluster_finds_what_one_machine_finds() -> None:
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1,
                                  dashboard_address=None) as cluster:
        with distributed.Client(cluster) as client:
            report = policymaptest.sweep([EDGE, EDIT], client=client, shards=4)
    assert report.results == policymaptest.sweep([EDGE, EDIT]).results
