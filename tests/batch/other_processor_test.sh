#!/usr/bin/env bash
# Tests the batch program for another processor.
# Usage: other_processor_test.sh FOLDER_OF_PROGRAMS SAMPLES FOLDER_OF_NATIVE_PROGRAMS EMULATOR [ARGUMENT...]
set -u
# shellcheck source=tests/support/batch_tasks.sh
. "$(dirname "$0")/../support/batch_tasks.sh"

native=$3
other=("${@:4}" "$1"/quillmere-batch)
run_tasks "$2"
finish_checks
