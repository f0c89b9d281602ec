#!/usr/bin/python
# -*- coding: utf-8 -*-
# SPDX-License-Identifier: MIT

from __future__ import absolute_import, division, print_function
__metaclass__ = type

DOCUMENTATION = r'''
module: padkit_profile
short_description: Put a padkit tuning profile on a board
description:
  - Sets the board to the settings of a padkit-tune profile, all or nothing,
    and optionally installs the profile where C(padkit-tune apply --system)
    reads it at boot.
  - Reads the board with C(padkit-tune diff --json) first; the board is
    written only when a setting differs, and the file only when its content
    differs.
  - In check mode the settings go through C(padkit-tune apply --dry-run),
    which checks them as a real apply would and writes nothing.
version_added: 1.0.0
author: padkit developers
options:
  src:
    description:
      - Path of the profile on the target.
      - Exactly one of I(src) and I(content) is required.
    type: path
  content:
    description:
      - The text of the profile, one C(name = value) per line.
      - Messages about its lines name it C((standard input)).
    type: str
  dest:
    description:
      - Where to install the profile for boot, normally a C(.conf) file in
        C(/etc/padkit.d). Its directory must exist and be writable; that is
        checked before the board is touched.
      - Written atomically, and only when the profile is accepted and, with
        I(apply), applied.
      - Should writing it fail after the board was set, the task fails with
        C(changed) true and says that the board holds the profile's settings
        while the boot does not.
    type: path
  apply:
    description:
      - Set the board to the profile. With C(false) the profile is still
        checked against the board, but only I(dest) is written.
    type: bool
    default: true
extends_documentation_fragment:
  - padkit.board.padkit_tune
notes:
  - Supports check mode and diff mode. The diff shows the board's settings
    that differ from the profile, a DQ delay's code with its signed delay
    beside it, and the changes to I(dest).
  - A profile with a bad line fails the task with every C(FILE:LINE:)
    message and changes nothing. When a write fails, padkit-tune puts back
    every property it had written; the task fails and names them.
seealso:
  - module: padkit.board.padkit_facts
'''

EXAMPLES = r'''
- name: Tune the USB PHYs and keep the tuning for boot
  padkit.board.padkit_profile:
    content: |
      ehci0-phy::tx-vref = 9
      mmc::rdqs = 40
    dest: /etc/padkit.d/50-usb.conf

- name: Apply a profile copied to the board before
  padkit.board.padkit_profile:
    src: /root/board-17.conf

- name: Install a profile for the next boot only
  padkit.board.padkit_profile:
    src: /root/board-17.conf
    dest: /etc/padkit.d/50-board.conf
    apply: false
'''

RETURN = r'''
settings:
  description: The settings of the profile that the board did not hold before the task.
  returned: always
  type: list
  elements: dict
  contains:
    name:
      description: The property; a DQ composite is listed member by member.
      type: str
    board:
      description: Its value on the board before.
      type: int
    file:
      description: Its value in the profile.
      type: int
    board_delay:
      description: For a DQ delay, the signed delay of I(board), such as C(-0) or C(+3).
      type: str
      returned: for a DQ delay
    file_delay:
      description: For a DQ delay, the signed delay of I(file).
      type: str
      returned: for a DQ delay
  sample: [{"name": "ehci0-phy::tx-vref", "board": 8, "file": 9}]
dest_changed:
  description: Whether I(dest) was, or in check mode would be, written.
  returned: always
  type: bool
'''

import json
import os
import tempfile

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.text.converters import to_bytes, to_native
from ansible_collections.padkit.board.plugins.module_utils.padkit_tune import (
    BINARY_ARGUMENT, NOT_DONE, OK, fail_tune, run_tune)


def shown(setting, side):
    """A value as padkit-tune shows it to people: a DQ delay's code with its delay."""
    delay = setting.get(side + '_delay')
    return '%s (delay %s)' % (setting[side], delay) if delay else str(setting[side])


def settings_text(settings, side):
    return ''.join('%s = %s\n' % (s['name'], shown(s, side)) for s in settings)


def read_file(path):
    if not os.path.exists(path):
        return None
    with open(path, 'rb') as f:
        return f.read()


def differences(module, profile, data):
    """The profile's settings that the board does not hold."""
    rc, out, err = run_tune(module, ['diff', '--json', profile], data)
    if rc == OK:
        return []
    if rc == NOT_DONE:
        return json.loads(out)
    # A bad line, an unreadable property, the lock: padkit-tune says which.
    fail_tune(module, 'padkit-tune diff failed (status %d):' % rc, rc, out, err)


def apply_profile(module, profile, data):
    args = ['apply', '--dry-run', profile] if module.check_mode else ['apply', profile]
    rc, out, err = run_tune(module, args, data)
    if rc == NOT_DONE and not module.check_mode:
        fail_tune(module, 'padkit-tune apply failed and put back what it had written:',
                  rc, out, err)
    elif rc != OK:
        fail_tune(module, 'padkit-tune apply failed (status %d):' % rc, rc, out, err)


def install(module, dest, text, board_changed):
    """Writes DEST whole: a hidden temporary file beside it (which
    apply --system leaves out), renamed over it."""
    fd, tmp = tempfile.mkstemp(dir=os.path.dirname(dest), prefix='.padkit-')
    try:
        with os.fdopen(fd, 'wb') as f:
            f.write(text)
            f.flush()
            os.fsync(f.fileno())
        os.chmod(tmp, 0o644)
        os.rename(tmp, dest)
    except OSError as e:
        os.unlink(tmp)
        board = ('the board holds the profile\'s settings now, but boots with what it had'
                 if board_changed else 'the board is unchanged')
        module.fail_json(msg='cannot install %s: %s; %s' % (dest, e.strerror, board),
                         changed=board_changed)


def main():
    module = AnsibleModule(
        argument_spec=dict(
            src=dict(type='path'),
            content=dict(type='str'),
            dest=dict(type='path'),
            apply=dict(type='bool', default=True),
            binary=BINARY_ARGUMENT,
        ),
        required_one_of=[('src', 'content')],
        mutually_exclusive=[('src', 'content')],
        supports_check_mode=True,
    )
    p = module.params
    # Known before the board is touched, not after it has been set.
    if p['dest'] and (os.path.isdir(p['dest']) or not os.path.isdir(os.path.dirname(p['dest']))):
        module.fail_json(msg='dest must name a file in an existing directory: %s' % p['dest'])
    if p['dest'] and not os.access(os.path.dirname(p['dest']), os.W_OK):
        module.fail_json(msg='dest %s cannot be written: its directory is not writable; '
                         'the board is unchanged' % p['dest'])
    # Content goes to padkit-tune on standard input; no file to clean up.
    profile, data = ('-', to_bytes(p['content'])) if p['content'] is not None else (p['src'], None)
    settings = differences(module, profile, data)
    if p['apply'] and settings:
        apply_profile(module, profile, data)

    text = data if data is not None else read_file(profile)
    installed = read_file(p['dest']) if p['dest'] else text
    dest_changed = installed != text
    if dest_changed and not module.check_mode:
        install(module, p['dest'], text, bool(p['apply'] and settings))

    diff = []
    if p['apply'] and settings:
        diff.append(dict(before_header='board', after_header='board',
                         before=settings_text(settings, 'board'),
                         after=settings_text(settings, 'file')))
    if dest_changed:
        diff.append(dict(before_header=p['dest'], after_header=p['dest'],
                         before=to_native(installed or b''), after=to_native(text)))
    module.exit_json(changed=bool(p['apply'] and settings) or dest_changed,
                     settings=settings, dest_changed=dest_changed, diff=diff)


if __name__ == '__main__':
    main()
