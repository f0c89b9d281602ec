#!/usr/bin/python
# -*- coding: utf-8 -*-
# SPDX-License-Identifier: MIT

from __future__ import absolute_import, division, print_function
__metaclass__ = type

DOCUMENTATION = r'''
module: padkit_facts
short_description: Read a board's padkit tuning as facts
description:
  - Sets the fact C(padkit) to the board's properties as C(padkit-tune dump --json)
    prints them, name to value.
version_added: 1.0.0
author: padkit developers
options:
  names:
    description:
      - Properties or groups to read, for example C(mmc) or C(ehci0-phy::tx-vref);
        all properties when empty.
    type: list
    elements: str
    default: []
extends_documentation_fragment:
  - padkit.board.padkit_tune
notes:
  - Supports check mode; it only reads.
  - A property that cannot be read has the value C(null) and gives a warning.
seealso:
  - module: padkit.board.padkit_profile
'''

EXAMPLES = r'''
- name: Read the whole board
  padkit.board.padkit_facts:

- name: Read the eMMC and one USB property
  padkit.board.padkit_facts:
    names: [mmc, ehci0-phy::tx-vref]

- name: Show the read DQS delay
  ansible.builtin.debug:
    var: ansible_facts.padkit['mmc::rdqs']
'''

RETURN = r'''
ansible_facts:
  description: The board's properties.
  returned: always
  type: dict
  contains:
    padkit:
      description: Property name to value, a number, a list for a DQ composite,
        or null when unreadable.
      type: dict
      sample: {"ehci0-phy::tx-vref": 8, "mmc::rdqs": 37}
'''

import json

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.padkit.board.plugins.module_utils.padkit_tune import (
    BINARY_ARGUMENT, NOT_DONE, OK, fail_tune, run_tune)


def main():
    module = AnsibleModule(
        argument_spec=dict(
            names=dict(type='list', elements='str', default=[]),
            binary=BINARY_ARGUMENT,
        ),
        supports_check_mode=True,
    )
    rc, out, err = run_tune(module, ['dump', '--json', '--'] + module.params['names'])
    # Status 1 with a dump: some property could not be read; without one,
    # the lock could not be taken.
    if rc not in (OK, NOT_DONE) or not out:
        fail_tune(module, 'padkit-tune dump failed (status %d):' % rc, rc, out, err)
    board = json.loads(out)
    unreadable = [name for name, value in board.items() if value is None]
    if unreadable:
        module.warn('unreadable: %s' % ', '.join(unreadable))
    module.exit_json(changed=False, ansible_facts=dict(padkit=board))


if __name__ == '__main__':
    main()
