# SPDX-License-Identifier: Apache-2.0
import subprocess

import pytest

from documents import BUILD


@pytest.fixture(scope="session")
def installed(tmp_path_factory):
    """The prefix of an installed copy."""
    prefix = tmp_path_factory.mktemp("installed")
    subprocess.run(
        ["cmake", "--install", BUILD, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL
    )
    return prefix
