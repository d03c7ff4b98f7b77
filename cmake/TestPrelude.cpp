// A program without tests, whose compilation makes the header above for those that have some.
