#!/bin/sh
# usage: pkg-config.sh PROGRAM: builds version.c as PROGRAM.
set -e
program=$1
cc version.c $(pkg-config --cflags --libs TarnRemoteClient) -o "$program"
