const log = logger('highlight');
