# -*- coding: utf-8 -*-
# SPDX-License-Identifier: MIT

from __future__ import absolute_import, division, print_function
__metaclass__ = type


class ModuleDocFragment(object):
    # The option of every module that runs padkit-tune.
    DOCUMENTATION = r'''
options:
  binary:
    description:
      - The padkit-tune program on the target, by name or path.
    type: str
    default: padkit-tune
requirements:
  - padkit-tune on the target
'''
