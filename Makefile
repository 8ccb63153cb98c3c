# The two set-up commands are `make run` and `make test`; each installs what is missing first.
JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 60
MEMORY_MINUTES ?= 2
DEV := build/dev
CORVALOG_WERROR ?= OFF

.PHONY: all deps configure build run test bench bench-gate fuzz asan format

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake --preset dev -DCORVALOG_WERROR=$(CORVALOG_WERROR) >/dev/null

build: configure
	cmake --build --preset dev -j $(JOBS)

# The built program keeps its settings beside itself (a Config.INI there is the settings file),
# and starts on the demo workspace the first time.
run: build
	@test -f $(DEV)/app/Config.INI || $(DEV)/cli/corvalog-cli ini set $(DEV)/app/Config.INI \
		WorkspaceFiles InitDir "$(CURDIR)/examples"
	@$(DEV)/cli/corvalog-cli ini get $(DEV)/app/Config.INI WorkspaceFiles InitFile "" | grep -q . \
		|| $(DEV)/cli/corvalog-cli ini set $(DEV)/app/Config.INI WorkspaceFiles InitFile demo.lws
	$(DEV)/app/corvalog $(ARGS)

test: build
	ctest --preset dev -j $(JOBS)

bench: build
	$(DEV)/bench/corvalog_bench $(BENCH_ARGS)

# The figures the project promises, checked against the benchmark binary.
bench-gate: build
	scripts/check-bench $(DEV)/bench/corvalog_bench
	bench/hour/check $(DEV)/cli/corvalog-cli
	bench/live/check $(DEV)/cli/corvalog-cli
	scripts/check-bench $(DEV)/bench/corvalog_ui_bench bench/ui/gates.txt
	bench/ui/idle-check $(DEV)/src/corvalog-gallery 20
	bench/app/startup-check $(DEV)/app/corvalog examples
	bench/app/memory-check $(DEV)/app/corvalog bench/live/live-1ms.lws $(MEMORY_MINUTES)

asan: deps
	@cmake --preset asan >/dev/null
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

fuzz: deps
	@cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz -j $(JOBS)
	scripts/run-fuzzers build/fuzz $(FUZZ_SECONDS)

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')
