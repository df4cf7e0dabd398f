'''Don't
say "no"'''
x = '''a'''
