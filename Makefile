# The targets that people type. Each installs what is missing, says what it does, and ends with one clear line.
.PHONY: help demo test test-windows lint bench docs install clean

help:
	@echo "make demo          fit the measured data that comes along, print the report, plot it"
	@echo "make test          build and run all tests on Linux: natively, with sanitizers, and a stranger's project"
	@echo "make test-windows  the same tests on Windows, 64 and 32 bit: cross-compiled, run under Wine"
	@echo "make lint          formatting, static analysis, rules of the house"
	@echo "make bench         speed beside the libraries that one would use instead"
	@echo "make docs          write the documents that are made from the sources"
	@echo "make install       install the library (PREFIX=/usr/local)"
	@echo "make clean         remove the build folder"

demo:
	@scripts/run-demo

test:
	@scripts/test-linux

test-windows:
	@scripts/test-windows

lint:
	@scripts/lint

bench:
	@scripts/run-bench

docs:
	@scripts/make-failure-catalogue --write

PREFIX ?= /usr/local
install:
	@scripts/run-install "$(PREFIX)"

clean:
	rm -rf build
