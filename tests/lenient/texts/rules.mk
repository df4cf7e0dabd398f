all:
	$(CC) -o $(OUT) $<; echo 'it'"'"'s'
