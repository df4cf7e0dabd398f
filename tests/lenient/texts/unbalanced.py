print("(")
print('[')
# ]})
