# Front door: `make run` builds everything and runs the main job on its
# default scenario; `make test` builds and runs the test suite.
BUILD    ?= build
JOBS     ?= $(shell nproc)
CMAKE_ARGS ?=
BUILD_DEPS = cmake g++ make libgtest-dev libgmock-dev libcli11-dev nlohmann-json3-dev valgrind \
             libopenmpi-dev openmpi-bin pybind11-dev python3-dev python3-numpy python3-pytest python3-matplotlib
# Needed only by the suite: gnuplot draws the plots the --plot tests check.
TEST_DEPS = gnuplot-nox

.PHONY: deps configure build run test python bench clean

deps:
	@./scripts/deps.sh $(BUILD_DEPS)

configure: deps
	cmake -S . -B $(BUILD) $(CMAKE_ARGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	./$(BUILD)/apps/flashbch/flashbch simulate

test: build
	@./scripts/deps.sh $(TEST_DEPS)
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The Python module alone: PYTHONPATH=$(BUILD)/python imports it.
python: configure
	cmake --build $(BUILD) -j $(JOBS) --target python_module

bench: deps
	@./scripts/deps.sh libbenchmark-dev
	cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DQFB_BUILD_BENCH=ON -DQFB_BUILD_TESTS=OFF
	cmake --build build-bench -j $(JOBS)

clean:
	rm -rf $(BUILD) build-bench
