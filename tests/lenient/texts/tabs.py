if x:
	if y:
		return "	"
