# -*- coding: utf-8 -*-
# SPDX-License-Identifier: MIT
"""Runs padkit-tune on the target for the padkit modules."""

from __future__ import absolute_import, division, print_function
__metaclass__ = type

# padkit-tune's exit statuses that the modules tell apart; any other is a failure.
OK = 0
NOT_DONE = 1

BINARY_ARGUMENT = dict(type='str', default='padkit-tune')


def run_tune(module, args, data=None):
    """Runs the binary named by the module's `binary` with ARGS; DATA is its
    standard input. Returns the exit status, standard output and error."""
    binary = module.get_bin_path(module.params['binary'], required=True)
    return module.run_command([binary] + args, data=data, binary_data=True)


def fail_tune(module, what, rc, out, err):
    """Fails the task with WHAT and padkit-tune's own messages."""
    lines = err.splitlines()
    module.fail_json(msg='\n'.join([what] + lines), rc=rc, stdout=out, stderr=err,
                     stderr_lines=lines)
