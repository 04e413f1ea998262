# The two commands a new user needs: `make run` and `make test`.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)
EXAMPLE ?= examples/sales.tabulon

.PHONY: all deps configure build run test clean format

all: build

deps:
	@./scripts/install-deps.sh

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja

configure: deps $(BUILD_DIR)/build.ninja

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@./scripts/run-example.sh $(BUILD_DIR)/tabulon $(EXAMPLE)

test: build
	@./scripts/run-tests.sh $(BUILD_DIR)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)
