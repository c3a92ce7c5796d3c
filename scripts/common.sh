# Sourced by the scripts: where Qt lives and how many jobs to run.
if [ "$(uname -s)" = Darwin ]; then
    TOCK_JOBS=$(sysctl -n hw.ncpu)
    TOCK_CMAKE_ARGS=(-DCMAKE_PREFIX_PATH="$(brew --prefix qt)")
else
    TOCK_JOBS=$(nproc)
    TOCK_CMAKE_ARGS=()
fi
