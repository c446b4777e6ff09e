# How programs with a sanitizer run. Sourced.

# sanitizer_settings: exports them, and leaves in `fixed_layout` what comes before a command.
sanitizer_settings() {
    export ASAN_OPTIONS="detect_stack_use_after_return=1:strict_string_checks=1"
    export UBSAN_OPTIONS="print_stacktrace=1"
    export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:suppressions=$root/tests/tsan.supp"
    # The runtimes of this compiler cannot place their shadow under every address layout.
    fixed_layout=()
    ! setarch -R true 2>/dev/null || fixed_layout=(setarch -R)
}
