# SPDX-License-Identifier: Apache-2.0
import gc
import sys

import pytest

import framequilt


@pytest.fixture(autouse=True)
def one_session_after_the_other():
    """A test that fails must not leave its session open for the next one."""
    yield
    sys.last_traceback = sys.last_value = None
    gc.collect()
    framequilt.set_report_sink(None)
