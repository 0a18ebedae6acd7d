# The targets that people type. Each installs what is missing, says what it does, and ends with one clear line.
.PHONY: help demo test test-sanitizers test-windows test-long mutants lint lint-deep check-lint fuzz bench docs install clean

help:
	@echo "make demo             fit the measured data that comes along, print the report, plot it"
	@echo "make test             build and run all tests on Linux, and a stranger's project on the installed library"
	@echo "make test-sanitizers  the same tests under the address, undefined-behaviour and thread sanitizers"
	@echo "make test-windows     the same tests on Windows, 64 and 32 bit: cross-compiled, run under Wine"
	@echo "make lint             formatting, static analysis, rules of the house"
	@echo "make bench            speed beside the libraries that one would use instead"
	@echo "make docs             write the documents that are made from the sources"
	@echo "make install          install the library (PREFIX=/usr/local)"
	@echo "make clean            remove the build folder"
	@echo "Before a release, and after changes of what they guard (CONTRIBUTING.md):"
	@echo "make test-long        the tests at full length: hundreds of kills, gigabytes, minutes"
	@echo "make mutants          changes of the code that the tests must notice"
	@echo "make lint-deep        the static analyzer"
	@echo "make check-lint       a planted fault for each rule of lint"
	@echo "make fuzz             the fuzzers, SECONDS=60 each"

demo:
	@scripts/run-demo

test:
	@scripts/test-native

test-sanitizers:
	@scripts/test-sanitizers

test-windows:
	@scripts/test-windows

test-long:
	@KRTBSS_TEST_LONG=1 scripts/test-native

mutants:
	@scripts/run-mutants $(AREAS)

lint:
	@scripts/lint

lint-deep:
	@scripts/lint analyzer

check-lint:
	@scripts/check-lint

SECONDS ?= 60
fuzz:
	@scripts/run-fuzz "$(SECONDS)"

bench:
	@scripts/run-bench

docs:
	@scripts/make-failure-catalogue --write
	@scripts/make-architecture --write

PREFIX ?= /usr/local
install:
	@scripts/run-install "$(PREFIX)"

clean:
	rm -rf build
